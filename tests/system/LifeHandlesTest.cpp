// What the lives of facades and the threads of a host leave behind in handles of the system: those
// that are meant to stay, and no others.

#include <gmock/gmock.h>

#include <future>
#include <thread>

#include "QorControlFacade.h"
#include "QorProcesses.h"
#include "StationSettings.h"
#include "support/HandleCensus.h"
#include "support/TcpProcessFigures.h"
#include "support/TempFolder.h"
#include "Waiting.h"

namespace {

constexpr unsigned amply = 15000;
/// The system makes an event for itself now and then.
constexpr int ofTheSystem = 3;

class LifeHandles : public testing::TestWithParam<Transport> {
protected:
    ~LifeHandles() override { qor::killAll(); }

    TempFolder folder;
    StationSettings settings{GetParam(), folder.path()};

    std::string settingsPath() const { return folder.pathOf("qor.ini"); }
    void writeSettings() const { folder.write("qor.ini", settings.text()); }
    /// QOR is somebody else's and outlives the facades.
    bool startQor() {
        settings.executable.clear();
        writeSettings();
        return settings.startQor(settingsPath());
    }
    std::unique_ptr<QorControlFacade> makeFacade() const {
        return std::make_unique<QorControlFacade>(settingsPath(), nullptr, 0, std::string());
    }

    /// What is there when all threads but the program's own have ended.
    HandleCensus countAtRest() const {
        EXPECT_TRUE(eventually(amply, [&] { return tcp::threadCount() == threadsAtRest; }));
        return countHandles();
    }
    /// Expects that since `before` at most so many events came, and exactly the others.
    static void expectOnly(const HandleCensus& before, const HandleCensus& after, int events,
                           const HandleCensus& others) {
        HandleCensus more = difference(after, before);
        EXPECT_LE(more["Event"], events + ofTheSystem);
        more.erase("Event");
        EXPECT_THAT(more, testing::ContainerEq(others));
    }
    /// Queues with an event stay in the process, one per operation and thread (and over TCP one per
    /// agent), but pass from threads that have ended to new ones: of threads that follow each other
    /// only so many are left.
    static constexpr int places = 3;

    const unsigned threadsAtRest = tcp::threadCount();
};

INSTANTIATE_TEST_SUITE_P(Over, LifeHandles, everyTransport(), transportName);

TEST_P(LifeHandles, LivesWithARunningQorLeaveNothing) {
    constexpr int lives = 20;
    ASSERT_TRUE(startQor());
    const auto live = [&] { EXPECT_TRUE(makeFacade()->pingQor(amply)); };
    live();
    const HandleCensus before = countAtRest();
    for (int life = 0; life < lives; ++life) live();
    expectOnly(before, countAtRest(), places, {});
}

TEST_P(LifeHandles, ALifeThatStartsQorLeavesTheHandlesOfItsProcessAndMainThread) {
    constexpr int lives = 6;
    // Wine's wait for a process to be idle leaves an event, too.
    constexpr int eventsPerLaunch = 1;
    writeSettings();
    const auto live = [&] {
        EXPECT_TRUE(makeFacade()->pingQor(amply));
        EXPECT_TRUE(eventually(amply, [] { return qor::running().empty(); }));
    };
    live();
    const HandleCensus before = countAtRest();
    for (int life = 0; life < lives; ++life) live();
    expectOnly(before, countAtRest(), lives * eventsPerLaunch + places,
               {{"Process", lives}, {"Thread", lives}});
}

TEST_P(LifeHandles, ALifeWhoseAgentEndedByItselfLeavesNoMore) {
    constexpr int lives = 8;
    settings.executable = folder.pathOf("no-such-qor.exe");
    writeSettings();
    const auto live = [&] {
        const auto facade = makeFacade();
        // Nobody waits for this one: it succeeds as long as there is an agent.
        EXPECT_TRUE(eventually(amply, [&] { return !facade->stopDtcRead(); }));
    };
    // The first in a process also bring what is made once.
    for (int life = 0; life < places; ++life) live();
    const HandleCensus before = countAtRest();
    for (int life = 0; life < lives; ++life) live();
    expectOnly(before, countAtRest(), places, {});
}

TEST_P(LifeHandles, ALifeThatIsLetGoDuringTheLaunchLeavesNoMoreOnceItsThreadHasEnded) {
    constexpr int lives = 8;
    constexpr int eventsPerLaunch = 2;  // these live side by side
    settings.script = folder.write("script.json", "no script, so QOR ends and never answers");
    writeSettings();
    const auto liveTogether = [&](int count) {
        std::vector<std::future<void>> ends;
        for (int life = 0; life < count; ++life)
            ends.push_back(std::async(std::launch::async, [&] {
                const auto facade = makeFacade();
                Sleep(500);
            }));
        for (std::future<void>& end : ends) end.get();
    };
    liveTogether(1);
    const HandleCensus before = countAtRest();
    liveTogether(lives);
    expectOnly(before, countAtRest(), lives * eventsPerLaunch,
               {{"Process", lives}, {"Thread", lives}});
}

TEST_P(LifeHandles, ShortThreadsLeaveNothing) {
    constexpr int threads = 30;
    constexpr int operations = 2;
    ASSERT_TRUE(startQor());
    const auto facade = makeFacade();
    const auto work = [&] {
        std::thread([&] {
            for (int call = 0; call < 3; ++call) {
                std::vector<double> values;
                EXPECT_TRUE(facade->pingQor(amply));
                EXPECT_TRUE(facade->getParamData("MaxEngineSpeed", values, amply));
            }
        }).join();
    };
    work();
    const HandleCensus before = countHandles();
    for (int thread = 0; thread < threads; ++thread) work();
    expectOnly(before, countHandles(), places * operations, {});
}

}  // namespace
