// Every operation of the C interface, with QOR's stand-in.

#include <thread>

#include "CStation.h"

using testing::Contains;
using testing::DoubleEq;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr unsigned amplyMs = 5000;

class COperations : public testing::TestWithParam<Transport> {
protected:
    CStation station{GetParam()};

    void SetUp() override {
        ASSERT_TRUE(station.start());
        ASSERT_TRUE(station.connectEcu());
        before = station.wire().size();
    }

    QorHandle qor() const { return station.handle; }
    std::vector<std::string> requests() const { return station.requests(before); }

    std::string resultText(unsigned row, unsigned column) {
        unsigned needed = 0;
        if (QorResultText(qor(), row, column, nullptr, 0, &needed) != QOR_OK) return lastCall();
        std::string text(needed, '\0');
        EXPECT_THAT(QorResultText(qor(), row, column, text.data(), needed, &needed),
                    IsCause(QOR_OK));
        EXPECT_EQ('\0', text.back());
        text.pop_back();
        return text;
    }

    std::vector<double> resultValues(unsigned index) {
        unsigned needed = 0;
        EXPECT_THAT(QorResultValues(qor(), index, nullptr, 0, &needed), IsCause(QOR_OK));
        std::vector<double> values(needed);
        EXPECT_THAT(QorResultValues(qor(), index, values.data(), needed, &needed), IsCause(QOR_OK));
        return values;
    }

    std::size_t before = 0;
};

INSTANTIATE_TEST_SUITE_P(Over, COperations, everyTransport(), transportName);

TEST_P(COperations, TheSpecialTimeOutsMeanWhatTheHeaderSays) {
    const double idle = 905;
    const auto write = [&](unsigned timeoutMs) {
        return QorSetParamData(qor(), "IdleSpeedTarget", &idle, 1, nullptr, 0, nullptr, 0,
                               timeoutMs);
    };
    EXPECT_THAT(QorPingQor(qor(), QOR_TRANSPORT_DEFAULT), IsCause(QOR_OK));
    EXPECT_THAT(write(QOR_TRANSPORT_DEFAULT), IsCause(QOR_OK));
    const int unlimited = QorPingQor(qor(), QOR_NO_LIMIT);
    EXPECT_TRUE(unlimited == QOR_OK || (GetParam() == Transport::tcp && unlimited == QOR_SILENT))
        << lastCall();
    before = station.wire().size();
    // A thread that is held up behind its request may find the answer there.
    EXPECT_TRUE(eventually(amplyMs, [&] { return write(QOR_DO_NOT_WAIT) == QOR_NOT_READY; }))
        << lastCall();
    EXPECT_TRUE(eventually(amplyMs, [&] { return !requests().empty(); }));  // carried out
}

TEST_P(COperations, TimeOutsThatCannotBeKeptAreRefusedBeforeQorIsAsked) {
    for (const unsigned timeoutMs : {0x80000000u, QOR_TRANSPORT_DEFAULT - 1}) {
        EXPECT_THAT(QorPingQor(qor(), timeoutMs), IsCause(QOR_BAD_ARGUMENT));
        EXPECT_THAT(QorClearDtc(qor(), timeoutMs), IsCause(QOR_BAD_ARGUMENT));
        EXPECT_THAT(QorStartDtcRead(qor(), timeoutMs, 100), IsCause(QOR_BAD_ARGUMENT));
    }
    EXPECT_THAT(requests(), Not(Contains("Ping 0")));
}

TEST_P(COperations, NoMoreThan65535NamesGoIntoOneCall) {
    const std::vector<const char*> names(65536, "IdleSpeedTarget");
    unsigned needed = 0;
    EXPECT_THAT(
        QorGetParamDataAtOnce(qor(), names.data(), 65536, 5000, nullptr, 0, &needed, nullptr),
        IsCause(QOR_REQUEST_TOO_LARGE));
    EXPECT_NE(std::string::npos, lastCall().find("more than 65,535")) << lastCall();
    if (GetParam() == Transport::window) return;  // Wine loses messages of megabytes
    EXPECT_THAT(
        QorGetParamDataAtOnce(qor(), names.data(), 65535, 20000, nullptr, 0, &needed, nullptr),
        IsCause(QOR_OK));
    EXPECT_EQ(65535u, needed);
}

TEST_P(COperations, AParameterIsDescribedInRowsAndColumns) {
    int threeArrays = 7;
    EXPECT_THAT(QorGetParamDescription(qor(), "IdleSpeedTarget", &threeArrays), IsCause(QOR_OK));
    EXPECT_EQ(0, threeArrays);
    EXPECT_EQ("IdleSpeedTarget", resultText(0, 0));
    EXPECT_EQ("IdleSpeedTarget", resultText(0, 1));
    EXPECT_EQ("Idle speed, warm engine", resultText(0, 2));
    EXPECT_EQ("1/min", resultText(0, 3));
    EXPECT_EQ("Idle", resultText(0, 4));
    EXPECT_THAT(QorResultText(qor(), 0, 5, nullptr, 0, nullptr), IsCause(QOR_BAD_ARGUMENT));
    EXPECT_THAT(QorResultText(qor(), 1, 0, nullptr, 0, nullptr), IsCause(QOR_BAD_ARGUMENT));
}

TEST_P(COperations, AScalarIsReadAndWritten) {
    const double wanted = 910;
    EXPECT_THAT(
        QorSetParamData(qor(), "IdleSpeedTarget", &wanted, 1, nullptr, 0, nullptr, 0, amplyMs),
        IsCause(QOR_OK));
    double value = 0;
    unsigned count = 0;
    EXPECT_THAT(QorGetParamData(qor(), "IdleSpeedTarget", amplyMs, &value, 1, &count),
                IsCause(QOR_OK));
    EXPECT_EQ(1u, count);
    EXPECT_THAT(value, DoubleEq(910));
    EXPECT_EQ("QOR_OK: ", lastCall());
    EXPECT_EQ("", lastCheck());
}

TEST_P(COperations, ACurveHasThreeArraysInBothDirections) {
    std::vector<double> values(8);
    unsigned count = 0;
    EXPECT_THAT(QorGetParamData(qor(), "ColdStartEnrichment", amplyMs, values.data(), 8, &count),
                IsCause(QOR_OK));
    EXPECT_THAT(values, ElementsAre(120, 95, 72, 54, 31, 16, 6, 0));
    const auto axis = resultValues(1);
    EXPECT_THAT(axis, ElementsAre(-30, -20, -10, 0, 20, 40, 60, 80));
    const auto third = resultValues(2);
    EXPECT_THAT(QorResultValues(qor(), 3, nullptr, 0, nullptr), IsCause(QOR_BAD_ARGUMENT));
    values[7] = 1;
    EXPECT_THAT(QorSetParamData(qor(), "ColdStartEnrichment", values.data(), 8, axis.data(),
                                static_cast<unsigned>(axis.size()), third.data(),
                                static_cast<unsigned>(third.size()), amplyMs),
                IsCause(QOR_OK));
    EXPECT_THAT(QorGetParamData(qor(), "ColdStartEnrichment", amplyMs, nullptr, 0, nullptr),
                IsCause(QOR_OK));
    EXPECT_EQ(values, resultValues(0));
}

TEST_P(COperations, WhatDoesNotFitIsNotLost) {
    std::vector<double> values(8, -1);
    unsigned count = 0;
    EXPECT_THAT(QorGetParamData(qor(), "ColdStartEnrichment", amplyMs, values.data(), 7, &count),
                IsCause(QOR_RESULT_TOO_LARGE));
    EXPECT_EQ(8u, count);
    EXPECT_THAT(values, testing::Each(-1));
    const std::size_t asked = station.wire().size();
    EXPECT_THAT(QorResultValues(qor(), 0, values.data(), 7, &count), IsCause(QOR_RESULT_TOO_LARGE));
    EXPECT_THAT(QorResultValues(qor(), 0, values.data(), 8, &count), IsCause(QOR_OK));
    EXPECT_THAT(values, ElementsAre(120, 95, 72, 54, 31, 16, 6, 0));
    EXPECT_THAT(station.requests(asked), IsEmpty());
}

TEST_P(COperations, ANullBufferJustAsksForTheSize) {
    unsigned count = 0;
    EXPECT_THAT(QorGetParamData(qor(), "CylinderTrim", amplyMs, nullptr, 0, &count),
                IsCause(QOR_OK));
    EXPECT_EQ(4u, count);
    EXPECT_THAT(resultValues(0), ElementsAre(0.4, -0.2, 0.1, -0.3));
    EXPECT_THAT(QorGetParamData(qor(), "CylinderTrim", amplyMs, nullptr, 1, &count),
                IsCause(QOR_BAD_ARGUMENT));
}

TEST_P(COperations, CharacterCodesAreReadAsBytes) {
    unsigned char bytes[32] = "";
    unsigned count = 0;
    EXPECT_THAT(QorGetParamDataAsString(qor(), "EcuSerialNumber", amplyMs, bytes, 5, &count),
                IsCause(QOR_RESULT_TOO_LARGE));
    EXPECT_EQ(13u, count);
    EXPECT_EQ('\0', bytes[0]);
    EXPECT_THAT(QorResultBytes(qor(), bytes, sizeof bytes, &count), IsCause(QOR_OK));
    EXPECT_EQ("EC0417-000293", std::string(reinterpret_cast<char*>(bytes), count));
    EXPECT_THAT(
        QorGetParamDataAsString(qor(), "EcuSerialNumber", amplyMs, bytes, sizeof bytes, nullptr),
        IsCause(QOR_OK));
}

TEST_P(COperations, ADynamicValueGoesOutAsText) {
    EXPECT_THAT(QorSetDynamicData(qor(), "MaxEngineSpeed", "6400", amplyMs), IsCause(QOR_OK));
    EXPECT_THAT(requests(), Contains("DirectCtrl 33 op=5 [] '6400'"));
}

TEST_P(COperations, AnActuatorIsTakenAndGivenBack) {
    const double open = 25;
    EXPECT_THAT(QorStartDirectCtrl(qor(), "IdleValve", amplyMs), IsCause(QOR_OK));
    EXPECT_THAT(QorSetParamData(qor(), "IdleValve", &open, 1, nullptr, 0, nullptr, 0, amplyMs),
                IsCause(QOR_OK));
    EXPECT_THAT(QorStopDirectCtrl(qor(), "IdleValve", amplyMs), IsCause(QOR_OK));
}

TEST_P(COperations, SeveralParametersComeInOneExchange) {
    const char* const names[] = {"CylinderTrim", "CylinderCount", "IdleSpeedGainP"};
    std::vector<double> values(6);
    unsigned counts[3] = {};
    unsigned count = 0;
    EXPECT_THAT(QorGetParamDataAtOnce(qor(), names, 3, amplyMs, values.data(), 5, &count, counts),
                IsCause(QOR_RESULT_TOO_LARGE));
    EXPECT_EQ(6u, count);
    EXPECT_THAT(counts, ElementsAre(4u, 1u, 1u));
    EXPECT_THAT(resultValues(1), ElementsAre(4));
    EXPECT_THAT(QorGetParamDataAtOnce(qor(), names, 3, amplyMs, values.data(), 6, &count, nullptr),
                IsCause(QOR_OK));
    EXPECT_THAT(values, ElementsAre(0.4, -0.2, 0.1, -0.3, 4, 0.045));
}

TEST_P(COperations, TroubleCodesAreReadAndCleared) {
    QorDtc codes[8] = {};
    unsigned count = 0;
    EXPECT_THAT(QorGetDtcByStatus(qor(), amplyMs, codes, 4, &count), IsCause(QOR_RESULT_TOO_LARGE));
    EXPECT_EQ(5u, count);
    EXPECT_THAT(QorResultDtcs(qor(), codes, 8, &count), IsCause(QOR_OK));
    EXPECT_EQ(0x113u, codes[0].code);
    EXPECT_EQ(96u, codes[0].status);
    EXPECT_EQ("P0301", resultText(1, 0));
    EXPECT_EQ("Cylinder 1: misfire detected", resultText(1, 1));
    EXPECT_EQ("Ignition", resultText(1, 3));
    EXPECT_THAT(QorClearDtc(qor(), amplyMs), IsCause(QOR_OK));
    EXPECT_THAT(QorGetDtcByStatus(qor(), amplyMs, codes, 8, &count), IsCause(QOR_OK));
    EXPECT_EQ(0u, count);
}

TEST_P(COperations, AKwpAnswerIsBytesAndAVerdict) {
    const unsigned char request[] = {0x90};
    unsigned char answer[32] = "";
    unsigned count = 0;
    int failed = 7;
    EXPECT_THAT(
        QorSendKwpCommand(qor(), 0x1A, request, 1, amplyMs, answer, sizeof answer, &count, &failed),
        IsCause(QOR_OK));
    EXPECT_EQ(0, failed);
    EXPECT_EQ(std::string("\x5A\x90TESTVEHICLE000042"),
              std::string(reinterpret_cast<char*>(answer), count));
    EXPECT_THAT(
        QorSendKwpCommand(qor(), 0x27, nullptr, 0, amplyMs, answer, sizeof answer, &count, &failed),
        IsCause(QOR_OK));
    EXPECT_NE(0, failed);
}

TEST_P(COperations, TheCanBusIsOpenedReadAndWritten) {
    QorCanBusConnect bus = {sizeof bus, 250000, 0, 1};
    EXPECT_THAT(QorConnectCanBus(qor(), &bus, QOR_CONNECT_ALTERNATIVE), IsCause(QOR_OK));
    const unsigned char message[] = {5, 0, 1};
    EXPECT_THAT(QorSendCanBusMsg(qor(), 0x200, 7, message, 3, amplyMs), IsCause(QOR_OK));
    const QorCanBusItem wanted[] = {{0x201, 5}, {0x7FF, 6}};
    QorCanBusItem items[2] = {};
    unsigned count = 0;
    EXPECT_THAT(QorGetCanBusData(qor(), wanted, 2, amplyMs, items, 1, &count),
                IsCause(QOR_RESULT_TOO_LARGE));
    EXPECT_THAT(QorResultCanBusItems(qor(), items, 2, &count), IsCause(QOR_OK));
    EXPECT_EQ(2u, count);
    EXPECT_EQ(-40, items[0].value);
    EXPECT_EQ(0x7FFu, items[1].canId);
    EXPECT_THAT(requests(), Contains("CanBusConnect 1 250000 0 1"));
    EXPECT_THAT(requests(), Contains("CanBusSend 512 7 [05 00 01]"));
}

TEST_P(COperations, ASegmentIsSelected) {
    EXPECT_THAT(QorSetEcuSegment(qor(), QorGetEdcRamSegmentName(), 1), IsCause(QOR_OK));
    EXPECT_THAT(requests(), Contains("EcuSegment 1 'WorkingPage' 1"));
    EXPECT_STREQ("ReferencePage", QorGetEdcRomSegmentName());
}

TEST_P(COperations, AModelIsOpened) {
    const char* const keys[] = {"b", "a"};
    const char* const values[] = {"2", nullptr};
    QorModelDescription model = {
        sizeof model, 6, "engine.sdm", 4, "engine.hex", 5, nullptr, 9, keys, values, 2};
    EXPECT_THAT(QorOpenModel(qor(), &model), IsCause(QOR_OK));
    EXPECT_THAT(requests(), Contains("StartEdit stage=7 mode=2 'engine.sdm' 4 ['engine.hex'][5] "
                                     "[][] ['a':'' 'b':'2']"));
}

TEST_P(COperations, TheStateIsToldWithoutARequest) {
    int online = 7;
    int connecting = 7;
    char path[512] = "";
    EXPECT_THAT(QorIsEcuOnline(qor(), &online), IsCause(QOR_OK));
    EXPECT_EQ(1, online);
    EXPECT_THAT(QorIsConnecting(qor(), &connecting), IsCause(QOR_OK));
    EXPECT_EQ(0, connecting);
    EXPECT_THAT(QorGetQorExecutablePath(qor(), path, sizeof path, nullptr), IsCause(QOR_OK));
    EXPECT_EQ(station.settings.executable, path);
    EXPECT_THAT(requests(), IsEmpty());
}

TEST_P(COperations, ARefusalAndAnUnknownNameAreFailures) {
    EXPECT_THAT(QorGetParamDescription(qor(), "NoSuchParameter", nullptr),
                IsCause(QOR_UNKNOWN_NAME));
    EXPECT_THAT(lastSentence(), Not(IsEmpty()));
    EXPECT_THAT(lastCheck(), Not(IsEmpty()));
    const double tooMuch = 99999;
    EXPECT_THAT(
        QorSetParamData(qor(), "IdleSpeedTarget", &tooMuch, 1, nullptr, 0, nullptr, 0, amplyMs),
        IsCause(QOR_REFUSED));
}

TEST_P(COperations, WithoutATimeOutNobodyHasWaited) {
    double value = 0;
    EXPECT_THAT(QorGetParamData(qor(), "EngineSpeed", QOR_DO_NOT_WAIT, &value, 1, nullptr),
                IsCause(QOR_NOT_READY));
    EXPECT_THAT(lastSentence(), testing::HasSubstr("with a time-out of 0 the call does not wait"));
}

// A host's call must not end up with another thread's result, nor with that of another handle.
TEST_P(COperations, AResultBelongsToItsThread) {
    EXPECT_THAT(QorGetParamData(qor(), "CylinderCount", amplyMs, nullptr, 0, nullptr),
                IsCause(QOR_OK));
    int there = QOR_OK;
    std::thread([&] { there = QorResultValues(qor(), 0, nullptr, 0, nullptr); }).join();
    EXPECT_EQ(QOR_WRONG_ORDER, there);
    EXPECT_THAT(resultValues(0), ElementsAre(4));
    EXPECT_THAT(QorResultBytes(qor(), nullptr, 0, nullptr), IsCause(QOR_WRONG_ORDER));
    EXPECT_THAT(resultValues(0), ElementsAre(4));
}

}  // namespace
