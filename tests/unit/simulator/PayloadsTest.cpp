#include "wire/Payloads.h"

#include <random>

#include "TestSupport.h"

namespace simulator::test {
namespace {

// Every payload written by hand; what is read from the bytes must write the same bytes again.
struct Golden {
    const char* command;
    const char* hex;
    std::string (*rewrite)(std::string_view payload);
};

template <class Payload>
std::string rewrite(std::string_view payload) {
    return Payload::read(payload).write();
}

const Golden goldenPayloads[] = {
    {"Ping", "02 00 00 00", rewrite<PingPayload>},
    {"StartEdit",
     "07 00 00 00 02 00 00 00 01 00 00 00 6D 03 00 00 00"
     "01 00 00 00 01 00 00 00 68 01 00 00 00 04 00 00 00"
     "01 00 00 00 02 00 00 00 63 73 01 00 00 00 05 00 00 00"
     "02 00 00 00 01 00 00 00 61 01 00 00 00 31 01 00 00 00 62 00 00 00 00",
     rewrite<EditPayload>},
    {"KwpConnect",
     "03 00 00 00 02 00 00 00 00 00 00 00 A0 28 00 00 48 E8 01 00 64 00 00 00"
     "30 00 00 00 E0 07 00 00 E8 07 00 00 11 00 00 00 F1 00 00 00 FF 00 00 00 00 00 00 00"
     "00 00 00 00 05 00 00 00 61 2E 64 6C 6C 01 00 00 00",
     rewrite<ConnectPayload>},
    {"GetParamInfo",
     "01 00 00 00 6E 01 00 00 00 61 00 00 00 00 01 00 00 00 63"
     "00 00 00 00 00 00 F0 BF 00 00 00 00 00 00 08 40 2A 00 00 00 00 00 00 00",
     rewrite<ParamInfoPayload>},
    {"Shutdown", "06 00 00 00", rewrite<ShutdownPayload>},
    {"SetParamList", "01 00 00 00 02 00 00 00 2A 00 00 00", rewrite<ParamListPayload>},
    {"ReceiveParamData", "F4 FF FF FF 00 00 00 00 00 00 F0 BF", rewrite<ParamDataPayload>},
    {"DirectCtrl",
     "2A 00 00 00 05 00 00 00 02 00 00 00 00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 40"
     "02 00 00 00 68 69",
     rewrite<DirectCtrlPayload>},
    {"EcuToolRoutine", "03 00 00 00", rewrite<RoutinePayload>},
    {"GetDtc",
     "01 00 00 00 01 03 00 00 60 00 00 00 01 00 00 00 61 00 00 00 00 01 00 00 00 63"
     "02 00 00 00 64 65 01 00 00 00",
     rewrite<TroubleCodesPayload>},
    {"RedirectUi", "01 00 00 00 63 02 00 00 00 74 78 04 00 00 00 07 00 00 00",
     rewrite<MessageBoxPayload>},
    {"GetHex", "09 00 00 00 01 00 00 00 61 00 00 00 00 01 00 00 00 63 01 00 00 00 64",
     rewrite<HexPayload>},
    {"StaticParam",
     "2A 00 00 00 02 00 00 00 01 00 00 00 00 00 00 00 00 00 F0 3F"
     "01 00 00 00 00 00 00 00 00 00 00 40 01 00 00 00 00 00 00 00 00 00 08 40",
     rewrite<StaticParamPayload>},
    {"EcuSegment", "01 00 00 00 02 00 00 00 57 50 01 00 00 00", rewrite<SegmentPayload>},
    {"ExecKwp", "02 00 00 00 1A 00 00 00 03 00 00 00 90 00 91 F4 01 00 00 01 00 00 00",
     rewrite<KwpPayload>},
    {"CanBusConnect", "01 00 00 00 20 A1 07 00 00 00 00 00 01 00 00 00",
     rewrite<CanConnectPayload>},
    {"CanBusData", "02 00 00 00 00 01 00 00 FF FF FF FF 00 02 00 00 05 00 00 00",
     rewrite<CanDataPayload>},
    {"ReadTogether",
     "02 00 00 00 03 00 00 00 04 00 00 00 02 00 00 00"
     "01 00 00 00 00 00 00 00 00 00 F0 3F 00 00 00 00"
     "02 00 00 00 01 00 00 00 61 01 00 00 00 62",
     rewrite<ReadTogetherPayload>},
    {"CanBusSend", "00 02 00 00 07 00 00 00 02 00 00 00 00 FF", rewrite<CanSendPayload>},
};

TEST(Payloads, EveryCommandWritesTheBytesThatItReads) {
    for (const Golden& golden : goldenPayloads) {
        const std::string bytes = bytesOf(golden.hex);
        EXPECT_EQ(golden.rewrite(bytes), bytes) << golden.command;
    }
}

TEST(Payloads, EveryCutOfEveryPayloadIsReadWithoutHarm) {
    for (const Golden& golden : goldenPayloads) {
        const std::string bytes = bytesOf(golden.hex);
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            const std::string cut = bytes.substr(0, size);
            EXPECT_FALSE(golden.rewrite(cut).empty() && size >= 4) << golden.command << size;
        }
    }
}

TEST(Payloads, RandomPayloadsNeverGrowWithoutBound) {
    std::mt19937 random(2);
    for (int round = 0; round < 3000; ++round) {
        std::string bytes(random() % 300, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random() % 8 == 0 ? random() % 256 : random() % 3);
        }
        for (const Golden& golden : goldenPayloads) {
            EXPECT_LT(golden.rewrite(bytes).size(), 5000U) << golden.command;
        }
    }
}

TEST(Payloads, FieldsThatAreMissingKeepTheirDefaults) {
    EXPECT_EQ(ParamInfoPayload::read("").index, -1);
    EXPECT_TRUE(ParamInfoPayload::read("").threeArrays);
    EXPECT_EQ(EditPayload::read("").stage, 7U);
    EXPECT_EQ(EditPayload::read("").number, 0xFFFFFFFFU);
    EXPECT_EQ(CanConnectPayload::read("").busParam, 250000U);
    EXPECT_TRUE(CanConnectPayload::read("").firstFlag);
    EXPECT_EQ(SegmentPayload::read("").word, 1U);
    EXPECT_EQ(KwpPayload::read("").channel, 1U);
    const ConnectPayload connect = ConnectPayload::read(bytesOf("03 00 00 00"));
    EXPECT_EQ(connect.protocol, 3U);
    EXPECT_EQ(connect.kLineBaudRate, 10400U);
    EXPECT_EQ(connect.canBaudRate, 125000U);
    EXPECT_EQ(connect.canRequestId, 0xFFFFFFFFU);
    EXPECT_TRUE(connect.finalFlag);
}

TEST(Payloads, TheConnectRecordHasItsModeAfterThePeriod) {
    const ConnectPayload connect = ConnectPayload::read(bytesOf(goldenPayloads[2].hex));
    EXPECT_EQ(connect.refreshPeriodMs, 100U);
    EXPECT_EQ(connect.mode, ConnectPayload::Security);
    EXPECT_EQ(connect.canRequestId, 0x7E0U);
    EXPECT_EQ(connect.addressByte2, 0xF1U);
    EXPECT_FALSE(connect.extraFlag);
    EXPECT_EQ(connect.securityDll, "a.dll");
}

TEST(Payloads, ASegmentWithoutFlagReadsAsFalse) {
    const SegmentPayload segment = SegmentPayload::read(bytesOf("01 00 00 00 02 00 00 00 57 50"));
    EXPECT_EQ(segment.segment, "WP");
    EXPECT_FALSE(segment.flag);
}

}  // namespace
}  // namespace simulator::test
