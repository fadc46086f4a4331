#pragma once

#include "cinterface/BoxPolicy.h"
#include "cinterface/HandleTable.h"
#include "cinterface/ThreadState.h"
#include "common/ThreadSlot.h"

namespace cinterface {

class Session;
class Stream;

/// What the interface keeps for the whole process.
struct Process {
    HandleTable<Session, NumberKind::handle> sessions;
    HandleTable<Stream, NumberKind::stream> streams;
    common::ThreadOwned<ThreadState> threads;
    common::Guarded<BoxPolicy> boxPolicy;  ///< of the handles to come
};

/// Made at the first use. It stays when the process ends: other threads have been stopped by then
/// wherever they were, with a lock or half of a list in their hands.
Process& process();

/// For the library's unloading alone, when nothing of it runs any more.
void forgetProcess() noexcept;

}  // namespace cinterface
