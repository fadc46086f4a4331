// The examples of the host guide do what the guide says: session, parameters, diagnostics.

#include <gmock/gmock.h>

#include <future>

#include "guide/Diagnostics.h"
#include "guide/Parameters.h"
#include "guide/Session.h"
#include "QorProcesses.h"
#include "Station.h"
#include "Waiting.h"

using testing::Contains;
using testing::DoubleNear;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;
using testing::StrEq;

namespace {

class Guide : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    guide::ConnectWindow window;

    /// With the refresh period of the guide's own connect, so that the cache takes its part.
    bool startConnected() {
        const bool connected =
            station.start() && guide::connectEcu(station.facade(), window).empty();
        EXPECT_TRUE(connected) << window.reason();
        return connected;
    }
    /// How a connect of the guide ends under a script.
    std::string connectUnder(const std::string& script) {
        station.script = script;
        return station.start() ? guide::connectEcu(station.facade(), window) : "not started";
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Guide, everyTransport(), transportName);

TEST_P(Guide, AWholeLifeMeasuresOnce) {
    station.writeSettings();
    double speed = -1;
    ASSERT_TRUE(guide::measureOnce(station.settingsPath, station.hostPath, speed));
    EXPECT_GE(speed, 0);
    EXPECT_LE(speed, 8000);
    EXPECT_TRUE(eventually(5000, [] { return qor::running().empty(); }));
    EXPECT_TRUE(station.traceHolds("1\tOK on get: EngineSpeed ["));
}

TEST_P(Guide, ALogHasOneLinePerCallAndMarksFailures) {
    ASSERT_TRUE(station.start());
    const std::string path = station.folder.pathOf("station.txt");
    {
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "w"),
                                                                   std::fclose);
        ASSERT_NE(nullptr, file);
        const guide::FileLog log(file.get());
        log.info("SET-segment(%s): [%d]", "WorkingPage", 1);
        log.error("FAILED GET-param(%s), t: %d ms", "100%s", 7);
    }
    EXPECT_EQ("SET-segment(WorkingPage): [1]\r\n! FAILED GET-param(100%s), t: 7 ms\r\n",
              bytesOfFile(path));
}

TEST_P(Guide, AStartingQorIsAwaitedAndADeadOneSoonGivenUp) {
    const std::atomic<bool> cancelled{false};
    station.open();
    EXPECT_TRUE(guide::awaitQor(station.facade(), cancelled));
    station->shutdown();
    EXPECT_LE(elapsedMsOf([&] { EXPECT_FALSE(guide::awaitQor(station.facade(), cancelled)); }),
              100u);
}

TEST_P(Guide, AConnectSaysWhyItFails) {
    const std::string rule = R"({"rules":[{"match":{"id":2,"operation":0},"action":)";
    EXPECT_EQ("QOR did not take the request", connectUnder(rule + R"({"answer":"refuse"}}]})"));
}

TEST_P(Guide, AConnectThatQorReportsAsFailedHasAReason) {
    EXPECT_EQ("Bootstrap failed - QOR reported", connectUnder(R"({"bootstrap":{"result":-2}})"));
}

TEST_P(Guide, AConnectCanBeCancelledAndShowsAsConnectingMeanwhile) {
    station.script = R"({"bootstrap":{"result":null}})";
    ASSERT_TRUE(station.start());
    EXPECT_THAT(guide::stateOf(station.facade()), StrEq("no ECU"));
    auto reason =
        std::async(std::launch::async, [&] { return guide::connectEcu(station.facade(), window); });
    EXPECT_TRUE(eventually(
        5000, [&] { return guide::stateOf(station.facade()) == std::string("connecting ..."); }));
    window.cancel();
    EXPECT_EQ("Bootstrap failed - cancelled", reason.get());
}

TEST_P(Guide, AConnectInTheBackgroundShowsInTheOnlineState) {
    ASSERT_TRUE(station.start());
    EXPECT_TRUE(guide::connectInBackground(station.facade(), 8000));
    EXPECT_THAT(guide::stateOf(station.facade()), StrEq("online"));
}

TEST_P(Guide, AConnectInTheBackgroundThatFailsIsFoundOutByTime) {
    station.script = R"({"rules":[{"match":{"id":2,"operation":0},"action":{"answer":"refuse"}}]})";
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(guide::connectInBackground(station.facade(), 600));
}

TEST_P(Guide, AWrittenParameterIsChangedAndAnotherIsNot) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(guide::writeChecked(station.facade(), "MaxEngineSpeed", 7000));
    bool changed = false;
    ASSERT_TRUE(guide::isChanged(station.facade(), "MaxEngineSpeed", changed));
    EXPECT_TRUE(changed);
    ASSERT_TRUE(guide::isChanged(station.facade(), "MaxVehicleSpeed", changed));
    EXPECT_FALSE(changed);
    EXPECT_FALSE(guide::isChanged(station.facade(), "NoSuchParameter", changed));
    // Back on the working page also after a failure: the reference page takes no values.
    EXPECT_TRUE(guide::writeChecked(station.facade(), "MaxEngineSpeed", 7100));
}

TEST_P(Guide, TheCacheKnowsNoPagesAndAGroupKnowsNoCache) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu(20000));
    ASSERT_TRUE(station->setParamData("MaxEngineSpeed", {7000}, {}, {}, 3000));
    ASSERT_TRUE(station->setEcuSegment(guide::pageName(false), false, nullptr));
    double number = 0;
    ASSERT_TRUE(guide::readNumber(station.facade(), "MaxEngineSpeed", number));
    EXPECT_EQ(7000, number);
    std::vector<double> firsts;
    ASSERT_TRUE(guide::snapshot(station.facade(), {"MaxEngineSpeed"}, firsts));
    EXPECT_THAT(firsts, ElementsAre(6500));
}

TEST_P(Guide, AnOpenedModelIsExported) {
    const char* const exported = "c:\\qor_exp.sde";
    std::ofstream(exported) << "old";
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(guide::openModel(station.facade(), "engine.sdm", "engine.hex"));
    EXPECT_TRUE(eventually(8000, [&] { return bytesOfFile(exported).size() == 150000u; }));
    EXPECT_TRUE(eventually(8000, [&] { return fileExists("c:\\qor_exp_add.sde"); }));
    DeleteFileA(exported);
    DeleteFileA("c:\\qor_exp_add.sde");
}

TEST_P(Guide, AModelThatIsNotOpenedHasAReason) {
    ASSERT_TRUE(station.start());
    EXPECT_THAT(guide::whyNoModel(station.facade(), {}), StartsWith("QOR refused the request. "));
    QorControlFacade::ModelDescription files = {};
    files.model = "engine.sdm";
    EXPECT_EQ("", guide::whyNoModel(station.facade(), files));
}

TEST_P(Guide, TheCanBusIsOpenedReadAndSentTo) {
    ASSERT_TRUE(startConnected());
    int value = 0;
    EXPECT_FALSE(guide::readCan(station.facade(), 0x201, value));
    ASSERT_TRUE(guide::openCanBus(station.facade()));
    ASSERT_TRUE(guide::readCan(station.facade(), 0x201, value));
    EXPECT_EQ(-40, value);
    ASSERT_TRUE(guide::sendCan(station.facade(), 0x200, 0x1200));
    ASSERT_TRUE(guide::readCan(station.facade(), 0x200, value));
    EXPECT_EQ(0x1200, value);
}

TEST(GuideNames, ThePagesAreNamed) {
    EXPECT_EQ("WorkingPage", guide::pageName(true));
    EXPECT_EQ("ReferencePage", guide::pageName(false));
}

TEST_P(Guide, TheFolderOfQorIsKnown) {
    station.open();
    const std::string program = qor::executable();
    EXPECT_EQ(program.substr(0, program.size() - std::string("qor-simulator.exe").size()),
              guide::folderOfQor(station.facade()));
}

TEST_P(Guide, ParametersAreDescribedAndRead) {
    ASSERT_TRUE(startConnected());
    std::string text;
    ASSERT_TRUE(guide::titleOf(station.facade(), "FanOnTemperature", text));
    EXPECT_EQ("Cooling fan on above [degC]", text);
    ASSERT_TRUE(guide::readText(station.facade(), "SoftwareVersion", text));
    EXPECT_EQ("4.12.7", text);
    double number = 0;
    ASSERT_TRUE(guide::readNumber(station.facade(), "KnockThreshold", number));
    EXPECT_EQ(1.45, number);
    std::vector<double> values, x, y;
    ASSERT_TRUE(station->getParamData("IgnitionMap", values, x, y, 3000));
    ASSERT_TRUE(guide::readCell(station.facade(), "IgnitionMap", 2, 3, number));
    EXPECT_EQ(values[3 * 8 + 2], number);
    EXPECT_FALSE(guide::readCell(station.facade(), "IgnitionMap", 8, 0, number));
    EXPECT_FALSE(guide::readCell(station.facade(), "PedalCurve", 0, 0, number));
    EXPECT_FALSE(guide::readNumber(station.facade(), "NoSuchParameter", number));
}

TEST_P(Guide, ParametersAreWrittenAndCompared) {
    ASSERT_TRUE(startConnected());
    EXPECT_TRUE(guide::writeChecked(station.facade(), "FanOnTemperature", 95.5));
    EXPECT_FALSE(guide::writeChecked(station.facade(), "FanOnTemperature", 500));
    EXPECT_TRUE(guide::writeAsText(station.facade(), "CylinderCount", "6"));
    EXPECT_FALSE(guide::writeAsText(station.facade(), "CylinderCount", "six"));
    std::vector<double> firsts;
    ASSERT_TRUE(guide::snapshot(station.facade(), {"CylinderCount", "FanOnTemperature"}, firsts));
    EXPECT_THAT(firsts, ElementsAre(6, 95.5));
}

TEST_P(Guide, AnActuatorMovesAMeasurementAndIsGivenBack) {
    ASSERT_TRUE(startConnected());
    std::vector<double> values;
    ASSERT_TRUE(
        guide::driveActuator(station.facade(), "ThrottleActuator", 80, "ThrottlePosition", values));
    ASSERT_THAT(values, SizeIs(5));
    EXPECT_GT(values.back(), values.front());
    double given = -1;
    EXPECT_TRUE(eventually(2000, [&] {
        return guide::readNumber(station.facade(), "ThrottleActuator", given) && given == 0;
    }));
    EXPECT_FALSE(guide::driveActuator(station.facade(), "EngineSpeed", 80, "EngineLoad", values));
}

TEST_P(Guide, TroubleCodesAreListedAndCleared) {
    ASSERT_TRUE(startConnected());
    std::vector<std::string> codes;
    ASSERT_TRUE(guide::presentCodes(station.facade(), codes));
    EXPECT_THAT(codes, ElementsAre("P0301 Cylinder 1: misfire detected",
                                   "U0100 Lost communication with the transmission controller"));
    EXPECT_TRUE(guide::codesAreGone(station.facade()));
}

TEST_P(Guide, AKwpRequestIsAnsweredRefusedOrNotSent) {
    ASSERT_TRUE(station.start());
    std::string bytes = "untouched";
    EXPECT_EQ(guide::Exchange::noAnswer, guide::readIdentification(station.facade(), 0x90, bytes));
    EXPECT_EQ("untouched", bytes);
    ASSERT_EQ("", guide::connectEcu(station.facade(), window));
    EXPECT_EQ(guide::Exchange::answered, guide::readIdentification(station.facade(), 0x90, bytes));
    EXPECT_EQ("\x5A\x90TESTVEHICLE000042", bytes);
    EXPECT_EQ(guide::Exchange::refused, guide::readIdentification(station.facade(), 0x77, bytes));
}

TEST_P(Guide, AKwpAnswerThatMayBelongToAnEarlierRequestIsAskedForAgain) {
    station.script =
        R"({"rules":[{"match":{"id":15,"operation":85},"action":{"answer":"ackOnly","then":[)"
        R"({"afterMs":900,"record":{"id":15,"payloadHex":"0100000095000000000000000000000000000000"}}]}}]})";
    ASSERT_TRUE(startConnected());
    QorControlFacade::KwpCommand slow = {0x55, "", 0};
    QorControlFacade::KwpCommand quick = {0x3E, "", 0};
    EXPECT_FALSE(station->sendKwpCommand(slow, 100));
    ASSERT_TRUE(guide::askForCertain(station.facade(), quick, 5));
    EXPECT_EQ("\x7E", quick.data);
}

}  // namespace
