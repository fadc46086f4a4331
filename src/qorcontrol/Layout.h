#pragma once

#include "qorcontrol/Event.h"
#include "qorcontrol/Lock.h"
#include "qorcontrol/ParamDescription.h"
#include "qorcontrol/ThreadSafeQueue.h"

/// What the library was built with: a host whose compiler, standard library or settings (packing,
/// debugging containers) make other sizes of the same records does not compile, instead of reading
/// texts as numbers. QorControlFacade.h includes this at its end; 64-bit builds, which cannot load
/// the library, are left alone.
namespace qorcontrol {

template <class Facade>
struct Layout {
    static constexpr bool isThatOfTheLibrary =
        sizeof(void*) != 4 ||
        (sizeof(Facade) == 4 && sizeof(typename Facade::EcuConnect::ConnType) == 4 &&
         sizeof(typename Facade::EcuConnect) == 72 && sizeof(typename Facade::CanBusConnect) == 8 &&
         sizeof(typename Facade::CanBusData) == 12 &&
         sizeof(typename Facade::CanBusData::Item) == 8 &&
         sizeof(typename Facade::DtcDescription) == 104 &&
         sizeof(typename Facade::KwpCommand) == 32 &&
         sizeof(typename Facade::ModelDescription) == 112 &&
         sizeof(typename Facade::ParamValue) == 36 && sizeof(wex::ParamDescription) == 128 &&
         sizeof(common::Lock) == 32 && sizeof(common::Event) == 4 &&
         sizeof(ThreadSafeQueue<int>) == 72);
};

}  // namespace qorcontrol
