// docs/binding.md against the enumeration of the request kinds.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "facade/FacadeImpl.h"
#include "support/MarkdownTable.h"

namespace {

using Impl = QorControlFacade::Impl;
using Rows = std::vector<std::vector<std::string>>;

// Without a default: the compiler then complains of a kind that is not named here.
const char* operationOf(Impl::Kind kind) {
    switch (kind) {
#define QOR_CASE(enumerator, name) \
    case Impl::enumerator:         \
        return "`" name "`"
        QOR_CASE(kindOpenModel, "openModel");
        QOR_CASE(kindConnect, "connect");
        QOR_CASE(kindGetParamDescription, "getParamDescription");
        QOR_CASE(kindGetParamData, "getParamData");
        QOR_CASE(kindSetParamData, "setParamData");
        QOR_CASE(kindStartDtcRead, "startDtcRead");
        QOR_CASE(kindStopDtcRead, "stopDtcRead");
        QOR_CASE(kindClearDtc, "clearDtc");
        QOR_CASE(kindSetEcuSegment, "setEcuSegment");
        QOR_CASE(kindStopParamRead, "stopParamRead");
        QOR_CASE(kindGetDtcByStatus, "getDtcByStatus");
        QOR_CASE(kindSendKwpCommand, "sendKwpCommand");
        QOR_CASE(kindConnectCanBus, "connectCanBus");
        QOR_CASE(kindGetCanBusData, "getCanBusData");
        QOR_CASE(kindGetParamDataAtOnce, "getParamDataAtOnce");
        QOR_CASE(kindSetDynamicData, "setDynamicData");
        QOR_CASE(kindPingQor, "pingQor");
        QOR_CASE(kindSendCanBusMsg, "sendCanBusMsg");
        QOR_CASE(kindStartDirectCtrl, "startDirectCtrl");
        QOR_CASE(kindStopDirectCtrl, "stopDirectCtrl");
#undef QOR_CASE
    }
    return nullptr;
}

TEST(RequestKinds, AreThoseOfTheDocument) {
    Rows built;
    for (std::uint32_t number = 0; number < 256; ++number) {
        const char* const operation = operationOf(static_cast<Impl::Kind>(number));
        if (operation != nullptr) built.push_back({std::to_string(number), operation});
    }
    const auto document = testing_support::linesOfDocument(BINDING_DOCUMENT);
    EXPECT_EQ(testing_support::tableOf(document, "| kind | operation |"), built);
}

}  // namespace
