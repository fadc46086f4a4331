// How a station comes up, and what it says when it does not.

#include <gmock/gmock.h>

#include "QorProcesses.h"
#include "Station.h"
#include "Waiting.h"

using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr unsigned amply = 3000;

class Start : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    std::vector<double> values;

    /// (A line is indented where the agent ends while the constructor is still at work.)
    bool awaitTrace(const std::string& words, unsigned timeoutMs = 5000) {
        return eventually(timeoutMs, [&] { return station.traceHolds(words); });
    }
    /// The agent has ended: nothing works, nothing takes time, nothing is logged.
    void expectDeadStation() {
        const std::size_t traced = station.trace().size();
        EXPECT_LE(elapsedMsOf([&] {
                      EXPECT_FALSE(station->pingQor(5000));
                      EXPECT_FALSE(station->getParamData("MaxEngineSpeed", values, 5000));
                      EXPECT_FALSE(station->setEcuSegment("WorkingPage", true, nullptr));
                      EXPECT_FALSE(station.connectEcu());
                      EXPECT_FALSE(station->connect(
                          usualConnect(), QorControlFacade::EcuConnect::Default, nullptr));
                      EXPECT_FALSE(station->stopDtcRead());
                      EXPECT_FALSE(station->isEcuOnline());
                  }),
                  500u);
        EXPECT_THAT(station.trace(traced), IsEmpty());
        EXPECT_THAT(station.logLines(), IsEmpty());
        EXPECT_LE(elapsedMsOf([&] { station.close(); }), 500u);
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Start, everyTransport(), transportName);

TEST_P(Start, AMissingSettingsFileEndsTheAgentWithItsPathInTheTrace) {
    station.construct();
    EXPECT_TRUE(
        awaitTrace("Exception when starting QOR Remote agent thread, Specified settings file for "
                   "QOR 'external operation mode' is not valid."));
    EXPECT_TRUE(station.traceHolds("File: " + station.settingsPath + "."));
    Sleep(200);
    expectDeadStation();
}

TEST_P(Start, ASettingsPathInAMissingFolderEndsTheAgent) {
    station.settingsPath = station.folder.pathOf("nowhere\\qor.ini");
    station.construct();
    EXPECT_TRUE(awaitTrace("File: " + station.settingsPath + "."));
    Sleep(200);
    expectDeadStation();
}

TEST_P(Start, AFolderInPlaceOfTheSettingsFileEndsTheAgentAsAMissingFileDoes) {
    station.settingsPath = station.folder.pathOf("");
    station.construct();
    EXPECT_TRUE(
        awaitTrace("Exception when starting QOR Remote agent thread, Specified settings file for "
                   "QOR 'external operation mode' is not valid."));
    EXPECT_TRUE(station.traceHolds("File: " + station.settingsPath + "."));
    Sleep(200);
    expectDeadStation();
}

TEST_P(Start, AMissingExecutableEndsTheAgentButItsPathIsKnown) {
    station.settings.executable = station.folder.pathOf("no-such-qor.exe");
    station.open();
    EXPECT_EQ(station.settings.executable, station->getQorExecutablePath());
    EXPECT_TRUE(
        awaitTrace("Exception when starting QOR Remote agent thread, Fail to launch QOR "
                   "external operating."));
    Sleep(200);
    expectDeadStation();
}

TEST_P(Start, WhatWasAskedWhileQorStartsIsServedOnceItRuns) {
    station.open();
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, 15000));
}

TEST_P(Start, AQorThatRunsAlreadyIsNotStartedAgain) {
    // The agent would end if it tried to start this one.
    station.settings.executable = station.folder.pathOf("no-such-qor.exe");
    station.writeSettings();
    station.startQorByHand();
    ASSERT_TRUE(station.start());
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_EQ(1u, qor::running().size());
    // It was there before, but it is this station's: it ends with it.
    station.close();
    EXPECT_TRUE(eventually(amply, [] { return qor::running().empty(); }));
}

TEST_P(Start, WithoutAnExecutableSomebodyElsesQorIsUsedAndLeftRunning) {
    station.settings.executable.clear();
    station.writeSettings();
    station.startQorByHand();
    ASSERT_TRUE(station.start());
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    station.close();
    Sleep(200);
    EXPECT_EQ(1u, qor::running().size());
    EXPECT_THAT(station.requests(), Not(Contains(HasSubstr("Shutdown"))));
    EXPECT_THAT(station.requests(), Not(Contains(HasSubstr("KwpConnect"))));
}

TEST_P(Start, WithoutAnExecutableAndWithoutQorOperationsFailInTimeAndTheEndIsQuick) {
    station.settings.executable.clear();
    station.open();
    bool done = true;
    EXPECT_LE(elapsedMsOf([&] { done = station->getParamData("MaxEngineSpeed", values, 700); }),
              1700u);
    EXPECT_FALSE(done);
    EXPECT_THAT(station.logLines(), Contains("error: FAILED GET-param(MaxEngineSpeed), t: # ms"));
    EXPECT_TRUE(station->connect(usualConnect(), QorControlFacade::EcuConnect::Default, nullptr));
    EXPECT_FALSE(station->isEcuOnline());
    EXPECT_LE(elapsedMsOf([&] { station.close(); }), 6000u);
}

TEST_P(Start, TheExecutablePathIsEmptyAfterThreeSecondsWhenThereIsNone) {
    station.settings.executable.clear();
    station.open();
    std::string path = "?";
    const unsigned elapsedMs = elapsedMsOf([&] { path = station->getQorExecutablePath(); });
    EXPECT_EQ("", path);
    EXPECT_GE(elapsedMs, 2970u);
    EXPECT_LE(elapsedMs, 4000u);
}

TEST_P(Start, AStationThatIsShutDownAnswersNoMore) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station->setParamData("MaxEngineSpeed", {7000}, {}, {}, amply));
    station->shutdown();
    const std::size_t traced = station.trace().size();
    EXPECT_FALSE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_FALSE(station->pingQor(amply));
    EXPECT_THAT(station.trace(traced), IsEmpty());
    EXPECT_LE(elapsedMsOf([&] { station->shutdown(); }), 40u);
}

TEST_P(Start, ANewFacadeInTheSameProcessTakesUpTheNextQor) {
    ASSERT_TRUE(station.start());
    station.close();
    ASSERT_TRUE(eventually(amply, [] { return qor::running().empty(); }));
    ASSERT_TRUE(station.start());
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
}

}  // namespace
