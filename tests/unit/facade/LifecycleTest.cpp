#include <algorithm>
#include <mutex>
#include <set>
#include <thread>

#include "FacadeFixture.h"
#include "support/FakeMonitor.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* opened = "1\t{ QorControlFacade::QorControlFacade()";
constexpr const char* closed = "1\t} QorControlFacade::QorControlFacade()";
constexpr const char* destroying = "1\t{ QorControlFacade::~QorControlFacade()";
constexpr const char* destroyed = "1\t} QorControlFacade::~QorControlFacade()";

class Lifecycle : public FacadeTest {
protected:
    std::vector<std::string> wholeTrace() { return linesOfFile(folder.pathOf("host.log")); }
};

TEST_F(Lifecycle, ConstructionAndDestructionAreScopesOfTheTraceBesideTheHost) {
    start();
    facade.reset();
    // On a busy machine the destructor may have to wait for the thread, and says so.
    const std::string waiting = "2\t   QOR Remote agent thread is still active, wait next 50 ms.";
    std::vector<std::string> scopes = wholeTrace();
    scopes.erase(std::remove(scopes.begin(), scopes.end(), waiting), scopes.end());
    EXPECT_THAT(scopes, ElementsAre(opened, closed, destroying, destroyed));
}

TEST_F(Lifecycle, OnlyTheLastExtensionOfTheHostPathIsReplaced) {
    hostPath = folder.pathOf("my.host.v2.exe");
    start();
    EXPECT_TRUE(fileExists(folder.pathOf("my.host.v2.log")));
    EXPECT_FALSE(fileExists(folder.pathOf("my.host.v2.cfg")));
}

TEST_F(Lifecycle, AnEmptyHostPathLeavesTheTraceWhereItIs) {
    tracelog::openTraceFile(folder.pathOf("elsewhere.log").c_str(), "w");
    hostPath = "";
    start();
    EXPECT_THAT(linesOfFile(folder.pathOf("elsewhere.log")), ElementsAre(opened, closed));
}

TEST_F(Lifecycle, AHostPathTooLongToSplitLeavesTheTraceWhereItIs) {
    tracelog::openTraceFile(folder.pathOf("elsewhere.log").c_str(), "w");
    hostPath = "c:\\" + std::string(5000, 'x') + ".exe";
    start();
    EXPECT_THAT(linesOfFile(folder.pathOf("elsewhere.log")), ElementsAre(opened, closed));
}

TEST_F(Lifecycle, TheTraceSettingsBesideTheHostAreRead) {
    folder.write("host.cfg", "ts=2\r\n");
    failAlways();
    start().pingQor(1);
    EXPECT_THAT(wholeTrace(), ElementsAre("2\tQorControlFacade::pingQor(), t: 0 ms"));
    tracelog::loadSettings(folder.write("all.cfg", "ts=4294967295\r\n").c_str());
}

TEST_F(Lifecycle, ASecondFacadeOfTheSameHostAppends) {
    start();
    start();
    facade.reset();
    // On a busy machine lines that the agent is still active come in between.
    const auto trace = wholeTrace();
    EXPECT_EQ(8, std::count_if(trace.begin(), trace.end(), [](const std::string& line) {
                  return line.find("QorControlFacade()") != std::string::npos;
              }));
}

TEST_F(Lifecycle, TheAgentGetsTheSettingsPathAsItWasGiven) {
    start(123);
    EXPECT_EQ(agent.channel()->settingsPath, "settings.ini");
    EXPECT_EQ(agent.channel()->values.readPeriodMs(), 123u);
}

TEST_F(Lifecycle, ASecondShutdownReturnsAtOnce) {
    start().shutdown();
    sleeps = 0;
    facade->shutdown();
    EXPECT_EQ(sleeps, 0);
}

TEST_F(Lifecycle, AShutdownOfADeadAgentReturnsAtOnceAndLeavesEverything) {
    agent.script().endsByItself = true;
    start();
    const auto channel = agent.channel();
    while (channel->agent.state() == common::ThreadState::running) Sleep(1);
    sleeps = 0;
    facade->shutdown();
    EXPECT_EQ(sleeps, 0);
    EXPECT_TRUE(channel->agent.hasHandle());
    EXPECT_TRUE(channel->agent.mayGoOn());
}

TEST_F(Lifecycle, AShutdownAsksTheAgentToEndAndTracesEach50MsThatItWaits) {
    agent.script().atEnd = [this](Channel&) {
        while (sleeps < 4) Sleep(1);
        Sleep(1);
    };
    start();
    facade->shutdown();
    EXPECT_TRUE(agent.hasEnded());
    EXPECT_GE(trace().size(), 3u);
    EXPECT_THAT(trace(), Each("2\tQOR Remote agent thread is still active, wait next 50 ms."));
}

TEST_F(Lifecycle, OfTwoShutdownsAtOnceOneWaitsForTheAgentAndTheOtherForTheFirst) {
    std::mutex mutex;
    std::set<std::thread::id> awaitTheAgent;
    std::set<std::thread::id> awaitTheirTurn;
    std::atomic<bool> mayEnd{false};
    clock.onSleep = [&](unsigned int ms) {
        {
            const std::lock_guard<std::mutex> guard(mutex);
            (ms < 50 ? awaitTheirTurn : awaitTheAgent).insert(std::this_thread::get_id());
            if (awaitTheirTurn.size() + awaitTheAgent.size() == 2) mayEnd = true;
        }
        // The first one sleeps until the other is there, too.
        for (int i = 0; i < 10000 && !mayEnd; ++i) Sleep(1);
        Sleep(1);
    };
    agent.script().atEnd = [&](Channel&) {
        while (!mayEnd) Sleep(1);
    };
    start();
    std::atomic<int> ended{0};
    const auto shutDown = [&] {
        facade->shutdown();
        ended += agent.hasEnded() ? 1 : 0;
    };
    std::thread first(shutDown);
    std::thread second(shutDown);
    first.join();
    second.join();
    clock.onSleep = nullptr;
    EXPECT_THAT(awaitTheAgent, SizeIs(1));
    EXPECT_EQ(ended, 2) << "neither returns before the end";
    EXPECT_THAT(trace(), Each("2\tQOR Remote agent thread is still active, wait next 50 ms."));
}

TEST_F(Lifecycle, AnAgentWhoseStateCannotBeReadIsNotAwaited) {
    std::atomic<bool> mayEnd{false};
    agent.script().atEnd = [&](Channel&) {
        while (!mayEnd) Sleep(1);
    };
    start();
    const auto channel = agent.channel();
    clock.onSleep = [&](unsigned int) {
        ++sleeps;
        channel->agent.letGo();  // there is no thread behind the handle any more
    };
    facade->shutdown();
    EXPECT_EQ(sleeps, 1);
    ASSERT_THAT(trace(), SizeIs(1));
    EXPECT_THAT(trace()[0],
                ::testing::StartsWith("3\tCan't obtain QOR Remote agent thread exit code, "));
    mayEnd = true;
    while (!agent.hasEnded()) Sleep(1);
}

TEST_F(Lifecycle, TheStateIsFreedWithTheFacade) {
    succeedAlways();
    start().pingQor(100);
    std::weak_ptr<Channel> channel = agent.channel();
    facade.reset();
    EXPECT_TRUE(channel.expired());
}

TEST_F(Lifecycle, AnAgentThatNeverEndsIsLetGoAfterFiveSecondsAndHarmsNobody) {
    std::atomic<bool> mayEnd{false};
    agent.script().atEnd = [&mayEnd](Channel& channel) {
        while (!mayEnd) Sleep(1);
        channel.executable.publish(std::string(1000, 'x'));
        channel.values.store("late", {});
    };
    start();
    std::weak_ptr<Channel> channel = agent.channel();
    const std::uint32_t before = clock.now();
    facade.reset();
    EXPECT_EQ(clock.now() - before, 50u + 100u * 50u);
    EXPECT_FALSE(channel.expired());
    EXPECT_FALSE(agent.hasEnded());
    EXPECT_EQ(linesOfFile(folder.pathOf("host.log")).size(), 2u + 1 + 100 + 1);
    mayEnd = true;
    while (!channel.expired()) Sleep(1);
    EXPECT_TRUE(agent.hasEnded());
}

TEST_F(Lifecycle, AfterAShutdownEveryOperationFailsWithoutALine) {
    succeedAlways(valuesOf({1.0}));
    start(1000);
    std::vector<double> values;
    ASSERT_TRUE(facade->getParamData("Cached", values, 100));
    facade->shutdown();
    const auto lines = trace().size();
    agent.forgetRequests();
    values = {7.0};
    std::string text = "mine";
    wex::ParamDescription description{"mine", "", "", "", "", 0, false};
    FakeMonitor monitor;
    EXPECT_FALSE(facade->getParamData("Cached", values, 100));
    EXPECT_FALSE(facade->getParamDataAsString("Cached", text, 100));
    EXPECT_FALSE(facade->setParamData("Cached", {}, {}, {}, 100));
    EXPECT_FALSE(facade->getParamDescription("Cached", description));
    EXPECT_FALSE(facade->pingQor(0xFFFFFFFFu));
    EXPECT_FALSE(facade->connect({}, QorControlFacade::EcuConnect::Default, nullptr));
    EXPECT_FALSE(facade->connect({}, QorControlFacade::EcuConnect::Default, &monitor));
    EXPECT_FALSE(facade->isConnecting());
    EXPECT_THAT(values, ElementsAre(7.0));
    EXPECT_EQ(text, "mine");
    EXPECT_EQ(description.name, "mine");
    EXPECT_EQ(trace().size(), lines);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(agent.requests(), IsEmpty());
}

TEST_F(Lifecycle, SegmentNamesAreTheTwoConstants) {
    EXPECT_EQ(QorControlFacade::getEdcRamSegmentName(), "WorkingPage");
    EXPECT_EQ(QorControlFacade::getEdcRomSegmentName(), "ReferencePage");
    EXPECT_EQ(&QorControlFacade::getEdcRamSegmentName(), &QorControlFacade::getEdcRamSegmentName());
}

TEST_F(Lifecycle, RightAfterConstructionTheEcuIsOffline) {
    EXPECT_FALSE(start().isEcuOnline());
    EXPECT_FALSE(facade->isConnecting());
}

TEST_F(Lifecycle, TheEcuIsOnlineForLessThanTwoSecondsAfterTheLastContact) {
    start();
    agent.channel()->contact.note(common::now());
    clock.advance(1999);
    EXPECT_TRUE(facade->isEcuOnline());
    clock.advance(1);
    EXPECT_FALSE(facade->isEcuOnline());
}

TEST_F(Lifecycle, TheEcuIsOnlineForAsLongAcrossTheWrapOfTheTickCount) {
    start();
    for (const std::uint32_t msBefore : {2001u, 2000u, 1999u, 1000u, 1u}) {
        SCOPED_TRACE(msBefore);
        clock.advanceToBeforeWrap(msBefore);
        agent.channel()->contact.note(common::now());
        EXPECT_TRUE(facade->isEcuOnline());
        clock.advance(1999);
        EXPECT_TRUE(facade->isEcuOnline());
        clock.advance(1);
        EXPECT_FALSE(facade->isEcuOnline());
        clock.advance(24 * 60 * 60 * 1000);
        EXPECT_FALSE(facade->isEcuOnline());
    }
}

TEST_F(Lifecycle, WithoutAnyContactTheEcuIsOfflineAlsoWhereTheTickCountBegins) {
    start();
    clock.advanceToBeforeWrap(0);
    ASSERT_EQ(clock.now(), 0u);
    EXPECT_FALSE(facade->isEcuOnline());
    clock.advance(1999);
    EXPECT_FALSE(facade->isEcuOnline());
}

TEST_F(Lifecycle, ThePathOfTheExecutableIsAwaitedUntilTheAgentPublishesIt) {
    agent.script().atStart = [](Channel& channel) {
        Sleep(30);
        channel.executable.publish("c:\\q.exe");
    };
    facade = std::make_unique<QorControlFacade>("s", nullptr, 0u, "");
    EXPECT_EQ(facade->getQorExecutablePath(), "c:\\q.exe");
    EXPECT_EQ(sleeps, 0);
}

/// A window of the calling thread whose copy-data messages publish the path of the executable.
class PublishingWindow {
public:
    explicit PublishingWindow(channel::Channel& shared) {
        published_ = &shared;
        WNDCLASSA windowClass = {};
        windowClass.lpfnWndProc = handle;
        windowClass.lpszClassName = "publishing window";
        RegisterClassA(&windowClass);
        window_ = CreateWindowA("publishing window", "", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr,
                                nullptr);
    }
    ~PublishingWindow() {
        DestroyWindow(window_);
        UnregisterClassA("publishing window", nullptr);
    }
    PublishingWindow(const PublishingWindow&) = delete;
    PublishingWindow& operator=(const PublishingWindow&) = delete;

    HWND window() const { return window_; }

private:
    static LRESULT CALLBACK handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != WM_COPYDATA) return DefWindowProcA(window, message, wParam, lParam);
        published_->executable.publish("c:\\q.exe");
        return 1;
    }

    static inline channel::Channel* published_ = nullptr;
    HWND window_ = nullptr;
};

TEST_F(Lifecycle, CopyDataOfTheThreadThatAwaitsThePathOfTheExecutableIsDispatched) {
    start();
    clock.msPerRead = 1;
    PublishingWindow window(*agent.channel());
    std::atomic<bool> isSent{false};
    std::thread sender([&isSent, target = window.window()] {
        COPYDATASTRUCT nothing = {};
        DWORD_PTR result = 0;
        SendMessageTimeoutA(target, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&nothing), SMTO_NORMAL,
                            10000, &result);
        isSent = true;
    });
    std::string path;
    // The faked three seconds may be over before the sender has begun.
    while (path.empty() && !isSent) path = facade->getQorExecutablePath();
    EXPECT_EQ(path, "c:\\q.exe");
    sender.join();
}

TEST_F(Lifecycle, ThePathOfTheExecutableIsGivenUpAfterThreeSeconds) {
    start();
    clock.msPerRead = 10;
    const std::uint32_t before = clock.now();
    EXPECT_EQ(facade->getQorExecutablePath(), "");
    EXPECT_GT(clock.now() - before, 3000u);
    EXPECT_LT(clock.now() - before, 3100u);
}

TEST_F(Lifecycle, ThePathOfTheExecutableIsAwaitedForAsLongAcrossTheWrapOfTheTickCount) {
    start();
    for (const std::uint32_t msBefore : {3001u, 2999u, 1500u, 1u}) {
        SCOPED_TRACE(msBefore);
        clock.msPerRead = 0;
        clock.advanceToBeforeWrap(msBefore);
        clock.msPerRead = 10;
        const std::uint32_t before = clock.now();
        EXPECT_EQ(facade->getQorExecutablePath(), "");
        EXPECT_GT(clock.now() - before, 3000u);
        EXPECT_LT(clock.now() - before, 3100u);
    }
}

TEST_F(Lifecycle, ThePathOfTheExecutableSurvivesTheAgent) {
    agent.script().atStart = [](Channel& channel) { channel.executable.publish("c:\\q.exe"); };
    start().shutdown();
    EXPECT_EQ(facade->getQorExecutablePath(), "c:\\q.exe");
}

/// Operations of another thread that still wait when the facade ends.
class DestructionWhileWaiting : public RealTimeFacadeTest {};

TEST_F(DestructionWhileWaiting, ATimedOperationTimesOutByItself) {
    const QorControlFacade& used = start();
    bool result = true;
    std::thread host([&] {
        std::vector<double> values;
        result = used.getParamData("Speed", values, 300);
    });
    while (agent.requests().empty()) Sleep(1);
    facade.reset();
    host.join();
    EXPECT_FALSE(result);
    ASSERT_THAT(log.lines(), SizeIs(1));
    EXPECT_THAT(log.lines().at(0), ::testing::StartsWith("error: FAILED GET-param(Speed), t: "));
}

TEST_F(DestructionWhileWaiting, AConnectEndsWithTheAgent) {
    const QorControlFacade& used = start();
    FakeMonitor monitor;
    bool result = true;
    std::thread host(
        [&] { result = used.connect({}, QorControlFacade::EcuConnect::Default, &monitor); });
    while (agent.requests().empty()) Sleep(1);
    facade.reset();
    host.join();
    EXPECT_FALSE(result);
}

}  // namespace
