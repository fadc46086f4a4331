#include "ClientFixture.h"
#include "common/Paths.h"

namespace {

using ::testing::Each;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class Launch : public ClientTest {
protected:
    Launch() { settings("QORexecutable=c:\\qor\\qor.exe\r\n"); }

    /// QOR answers pings from then on.
    void qorAnswersAfter(std::uint32_t ms) {
        const std::uint32_t first = clock.now() + ms;
        qor.on<CommandPing>([this, first](const CommandPing&) { return clock.now() >= first; });
    }
    void qorNeverAnswers() {
        qor.on<CommandPing>([](const CommandPing&) { return false; });
    }

    std::string onlyCommandLine() {
        client().launch(0);
        return processes.starts.empty() ? "" : processes.starts.front().commandLine;
    }
};

TEST_F(Launch, ARunningQorThatAnswersTheFirstPingIsNeverStartedASecondTime) {
    EXPECT_TRUE(client().launch(10000));
    EXPECT_THAT(processes.starts, IsEmpty());
    ASSERT_THAT(qor.sent(), SizeIs(1));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 200u);
    EXPECT_EQ(qor.last<CommandPing>().status, 0u);
}

TEST_F(Launch, AnEmptyExecutableSucceedsWithoutStartingAnything) {
    settings("QORexecutable=\r\n");
    qorNeverAnswers();
    EXPECT_TRUE(client().launch(10000));
    EXPECT_THAT(processes.starts, IsEmpty());
    EXPECT_THAT(qor.sent(), SizeIs(1));
}

TEST_F(Launch, AMissingKeyIsAnEmptyExecutable) {
    settings("");
    qorNeverAnswers();
    EXPECT_TRUE(client().launch(10000));
    EXPECT_THAT(processes.starts, IsEmpty());
    EXPECT_EQ(client().executablePath(), "");
    EXPECT_EQ(client().qorDirectory(), "");
}

TEST_F(Launch, TheCommandLineIsTheSwitchAndTheQuotedSettingsPathAfterABlank) {
    qorNeverAnswers();
    client().launch(700);
    ASSERT_THAT(processes.starts, SizeIs(1));
    EXPECT_EQ(processes.starts[0].executable, "c:\\qor\\qor.exe");
    EXPECT_EQ(processes.starts[0].commandLine, " -external_operating \"" + settingsPath + "\"");
    EXPECT_EQ(processes.starts[0].idleMs, 700u);
}

TEST_F(Launch, ARelativeExecutableIsTakenFromTheProgramsDirectoryAndNormalised) {
    settings("QORexecutable=sub\\..\\bin\\.\\q.exe\r\n");
    qorNeverAnswers();
    client().launch(0);
    ASSERT_THAT(processes.starts, SizeIs(1));
    EXPECT_EQ(processes.starts[0].executable, common::executableDirectory() + "bin\\q.exe");
    EXPECT_EQ(client().executablePath(), common::executableDirectory() + "bin\\q.exe");
    EXPECT_EQ(client().qorDirectory(), common::executableDirectory() + "bin\\");
}

TEST_F(Launch, AnExecutableThatCannotBeResolvedFailsWithoutAStart) {
    settings("QORexecutable=c:\\" + std::string(3000, 'x') + "\r\n");
    qorNeverAnswers();
    EXPECT_FALSE(client().launch(1000));
    EXPECT_THAT(processes.starts, IsEmpty());
    EXPECT_EQ(client().executablePath(), "");
}

TEST_F(Launch, ThePublishedPathIsOf5199CharactersAndTheStartedOneOfUpTo9999) {
    const std::string longest = "c:\\q." + std::string(9999 - 5, 'e');
    settings("QORexecutable=" + longest + "f\r\n");
    qorNeverAnswers();
    client().launch(0);
    ASSERT_THAT(processes.starts, SizeIs(1));
    EXPECT_EQ(processes.starts[0].executable, longest);
    EXPECT_EQ(client().executablePath(), longest.substr(0, 5199));
}

TEST_F(Launch, ACommandLineOfMoreThan9999CharactersIsNotGivenToAnybody) {
    constexpr std::size_t others = sizeof(" -external_operating \"\"") - 1;
    for (const std::size_t length : {std::size_t{9999}, std::size_t{10000}}) {
        ClientSettings given;
        given.path = "c:\\" + std::string(length - others - 3, 'x');
        given.executable = "c:\\q.exe";
        qorNeverAnswers();
        processes.starts.clear();
        ClientExternalOperating made(given, qor.transport(), processes.starter(),
                                     std::make_unique<FakeMessageBox>(pressButton));
        EXPECT_FALSE(made.launch(0));
        EXPECT_THAT(processes.starts, SizeIs(length == 9999 ? 1 : 0));
    }
}

TEST_F(Launch, ASettingsFileThatChangesAfterTheClientsCreationIsForTheNextOne) {
    client();
    settings("QORexecutable=\r\n");
    qorNeverAnswers();
    client().launch(0);
    ASSERT_THAT(processes.starts, SizeIs(1));
    EXPECT_EQ(processes.starts[0].executable, "c:\\qor\\qor.exe");
}

TEST_F(Launch, AStartThatFailsFailsAtOnce) {
    qorNeverAnswers();
    processes.onStart = [] { return false; };
    EXPECT_FALSE(client().launch(10000));
    EXPECT_THAT(processes.starts, SizeIs(1));
    EXPECT_THAT(qor.sent(), SizeIs(1));
}

TEST_F(Launch, QorIsPingedEvery10MsUntilItAnswers) {
    const std::uint32_t start = clock.now();
    qorAnswersAfter(25);
    EXPECT_TRUE(client().launch(10000));
    std::vector<std::uint32_t> ticks;
    for (const auto& each : qor.sent()) ticks.push_back(each.tick - start);
    EXPECT_THAT(ticks, ::testing::ElementsAre(0, 0, 10, 20, 30));
}

TEST_F(Launch, APingOfTheLoopGivesQor200Ms) {
    qorAnswersAfter(25);
    client().launch(10000);
    for (const auto& each : qor.sent()) EXPECT_EQ(each.timeoutMs, 200u);
}

TEST_F(Launch, AfterTheDeadlineOneLastPingDecidesAgainst) {
    qorNeverAnswers();
    EXPECT_FALSE(client().launch(100));
    // One before the start, at 0, 10 ... 100 ms, and the last one at 110.
    EXPECT_THAT(qor.sent(), SizeIs(1 + 11 + 1));
    EXPECT_EQ(qor.sent().back().tick - qor.sent().front().tick, 110u);
}

TEST_F(Launch, ItLastsAsLongAcrossTheWrapOfTheTickCount) {
    qorNeverAnswers();
    for (const std::uint32_t msBefore : {101u, 100u, 99u, 50u, 1u}) {
        SCOPED_TRACE(msBefore);
        clock.advanceToBeforeWrap(msBefore);
        qor.forgetSent();
        EXPECT_FALSE(client().launch(100));
        EXPECT_THAT(qor.sent(), SizeIs(1 + 11 + 1));
        EXPECT_EQ(qor.sent().back().tick - qor.sent().front().tick, 110u);
    }
}

TEST_F(Launch, AfterTheDeadlineOneLastPingDecidesInFavour) {
    qorAnswersAfter(110);
    EXPECT_TRUE(client().launch(100));
    EXPECT_THAT(qor.sent(), SizeIs(1 + 11 + 1));
}

TEST_F(Launch, TheTimeUntilQorIsIdleCountsAsTimeOfTheLaunch) {
    qorNeverAnswers();
    processes.onIdle = [this] { clock.advance(5000); };
    EXPECT_FALSE(client().launch(1000));
    EXPECT_THAT(qor.sent(), SizeIs(1 + 1 + 1));
}

TEST_F(Launch, TheTimeOfTheStartItselfDoesNotCount) {
    qorAnswersAfter(5110);
    processes.onStart = [this] {
        clock.advance(5000);
        return true;
    };
    EXPECT_TRUE(client().launch(1000));
}

TEST_F(Launch, ATimeoutOfZeroStillPingsTwice) {
    qorNeverAnswers();
    EXPECT_FALSE(client().launch(0));
    EXPECT_THAT(qor.sent(), SizeIs(3));
    EXPECT_THAT(processes.starts, SizeIs(1));
}

TEST_F(Launch, BlanksInTheSettingsPathStayInsideTheQuotes) {
    settingsPath =
        folder.write("my own qor.ini", "[CommonSettings]\r\nQORexecutable=c:\\q.exe\r\n");
    qorNeverAnswers();
    EXPECT_EQ(onlyCommandLine(), " -external_operating \"" + settingsPath + "\"");
}

TEST_F(Launch, ThePercentSignOfASettingsPathIsNoFormat) {
    settingsPath = folder.write("%s%d%n.ini", "[CommonSettings]\r\nQORexecutable=c:\\q.exe\r\n");
    qorNeverAnswers();
    EXPECT_EQ(onlyCommandLine(), " -external_operating \"" + settingsPath + "\"");
}

}  // namespace
