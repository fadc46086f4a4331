// Connects through the C interface: waited for, looked at, cancelled.

#include <atomic>
#include <thread>
#include <vector>

#include "CStation.h"

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr unsigned amplyMs = 20000;

/// The first trouble codes never come.
constexpr const char* holdsFirstCodes =
    R"({"rules":[{"match":{"id":9,"nth":1},"action":{"answer":"ackOnly"}}]})";

class CConnect : public testing::TestWithParam<Transport> {
protected:
    CStation station{GetParam()};

    QorHandle qor() const { return station.handle; }

    bool startWith(const std::string& bootstrap) {
        station.script = R"({"bootstrap":)" + bootstrap + "}";
        return station.start();
    }
    int begin() { return QorConnectStart(qor(), nullptr, QOR_CONNECT_DEFAULT); }
    QorConnectProgress poll() {
        QorConnectProgress progress = {};
        progress.size = sizeof progress;
        EXPECT_THAT(QorConnectPoll(qor(), &progress), IsCause(QOR_OK));
        return progress;
    }
    std::string reason() {
        char text[128] = "";
        EXPECT_THAT(QorConnectReason(qor(), text, sizeof text, nullptr), IsCause(QOR_OK));
        return text;
    }
    /// Asks for trouble codes, which keeps the agent for three seconds.
    std::thread holdAgent() {
        return std::thread(
            [handle = qor()] { QorGetDtcByStatus(handle, 3000, nullptr, 0, nullptr); });
    }
    bool awaitsSteps(unsigned steps) {
        return eventually(amplyMs, [&] { return poll().steps >= steps; });
    }
};

INSTANTIATE_TEST_SUITE_P(Over, CConnect, everyTransport(), transportName);

TEST_P(CConnect, TellsQorsOwnFiguresAndItsEndToWhoAsks) {
    ASSERT_TRUE(startWith(R"({"result":-1,"durationMs":1500,"steps":5,"online":true})"));
    ASSERT_THAT(begin(), IsCause(QOR_OK));
    int connecting = 0;
    QorIsConnecting(qor(), &connecting);
    EXPECT_EQ(1, connecting);
    ASSERT_TRUE(awaitsSteps(2));
    const QorConnectProgress amid = poll();
    EXPECT_EQ(1, amid.running);
    EXPECT_EQ(QOR_NOT_READY, amid.cause);
    EXPECT_GE(amid.progress, 40);
    EXPECT_LT(amid.progress, 100);
    EXPECT_THAT(QorConnectWait(qor(), 0), IsCause(QOR_NOT_READY));
    EXPECT_THAT(QorConnectWait(qor(), amplyMs), IsCause(QOR_OK));
    EXPECT_THAT(QorConnectWait(qor(), 0), IsCause(QOR_OK));
    const QorConnectProgress end = poll();
    EXPECT_EQ(0, end.running);
    EXPECT_EQ(QOR_OK, end.cause);
    EXPECT_EQ(100, end.progress);
    EXPECT_EQ(5u, end.steps);
    EXPECT_GE(end.elapsedMs, 1000u);
    EXPECT_THAT(reason(), IsEmpty());
}

TEST_P(CConnect, AnotherOneHasToWaitForItsEnd) {
    ASSERT_TRUE(startWith(R"({"result":-1,"durationMs":800,"steps":2,"online":true})"));
    ASSERT_THAT(begin(), IsCause(QOR_OK));
    EXPECT_THAT(begin(), IsCause(QOR_WRONG_ORDER));
    EXPECT_THAT(QorConnect(qor(), nullptr, QOR_CONNECT_DEFAULT, amplyMs), IsCause(QOR_WRONG_ORDER));
    EXPECT_THAT(QorConnectWait(qor(), amplyMs), IsCause(QOR_OK));
    EXPECT_THAT(begin(), IsCause(QOR_OK));
    EXPECT_EQ(0u, poll().steps);  // not those of the first one
    EXPECT_THAT(QorConnectWait(qor(), amplyMs), IsCause(QOR_OK));
}

TEST_P(CConnect, EndsSoonWhenItIsCancelled) {
    ASSERT_TRUE(startWith(R"({"result":null,"durationMs":100,"steps":1,"online":false})"));
    ASSERT_THAT(begin(), IsCause(QOR_OK));
    ASSERT_TRUE(awaitsSteps(1));
    EXPECT_THAT(QorConnectCancel(qor()), IsCause(QOR_OK));
    EXPECT_THAT(QorConnectWait(qor(), 3000), IsCause(QOR_CANCELLED));
    EXPECT_EQ(0, poll().running);
    EXPECT_THAT(reason(), HasSubstr("cancelled"));
}

TEST_P(CConnect, IsCancelledWhenItsTimeIsOver) {
    ASSERT_TRUE(startWith(R"({"result":null,"durationMs":100,"steps":1,"online":false})"));
    unsigned took = elapsedMsOf([&] {
        EXPECT_THAT(QorConnect(qor(), nullptr, QOR_CONNECT_DEFAULT, 700), IsCause(QOR_CANCELLED));
    });
    EXPECT_EQ("The connect was not at its end after 700 ms.", lastSentence());
    EXPECT_GE(took, 690u);
    EXPECT_LT(took, 5000u);
    EXPECT_EQ(0, poll().running);
    EXPECT_THAT(reason(), HasSubstr("cancelled"));
}

TEST_P(CConnect, TellsWhatQorReported) {
    ASSERT_TRUE(startWith(R"({"result":-2,"durationMs":300,"steps":3,"online":false})"));
    EXPECT_THAT(QorConnect(qor(), nullptr, QOR_CONNECT_DEFAULT, amplyMs),
                IsCause(QOR_CONNECT_REPORTED));
    EXPECT_THAT(lastSentence(), Not(IsEmpty()));
    EXPECT_EQ("Bootstrap failed - QOR reported", reason());
    char little[4] = "";
    unsigned needed = 0;
    EXPECT_THAT(QorConnectReason(qor(), little, sizeof little, &needed),
                IsCause(QOR_RESULT_TOO_LARGE));
    EXPECT_EQ(32u, needed);
    EXPECT_EQ(100, poll().progress);
}

TEST_P(CConnect, ThereIsNothingToAskBeforeTheFirst) {
    ASSERT_TRUE(station.start());
    QorConnectProgress progress = {};
    progress.size = sizeof progress;
    EXPECT_THAT(QorConnectPoll(qor(), &progress), IsCause(QOR_WRONG_ORDER));
    EXPECT_THAT(QorConnectWait(qor(), 0), IsCause(QOR_WRONG_ORDER));
    EXPECT_THAT(QorConnectCancel(qor()), IsCause(QOR_OK));
    EXPECT_THAT(reason(), IsEmpty());
}

TEST_P(CConnect, AnArgumentThatIsNoneLeavesQorAlone) {
    ASSERT_TRUE(station.start());
    const std::size_t before = station.wire().size();
    QorEcuConnect settings = usualCConnect();
    settings.addressByte1 = 256;
    EXPECT_THAT(QorConnectStart(qor(), &settings, QOR_CONNECT_DEFAULT), IsCause(QOR_BAD_ARGUMENT));
    settings = usualCConnect();
    settings.size = 4;
    EXPECT_THAT(QorConnectStart(qor(), &settings, QOR_CONNECT_DEFAULT), IsCause(QOR_BAD_ARGUMENT));
    EXPECT_THAT(QorConnectStart(qor(), nullptr, 0), IsCause(QOR_BAD_ARGUMENT));
    EXPECT_THAT(QorConnectStart(qor(), nullptr, 4), IsCause(QOR_BAD_ARGUMENT));
    EXPECT_THAT(station.requests(before), IsEmpty());
}

TEST_P(CConnect, TheHostsFunctionHearsEachFigure) {
    struct Heard {
        std::atomic<int> count{0};
        std::atomic<int> last{-1};
    } heard;
    ASSERT_TRUE(startWith(R"({"result":-1,"durationMs":1000,"steps":4,"online":true})"));
    const QorProgressFunction hear = [](void* user, int figure) {
        auto& to = *static_cast<Heard*>(user);
        ++to.count;
        to.last = figure;
    };
    EXPECT_THAT(QorSetProgress(qor(), hear, &heard), IsCause(QOR_OK));
    EXPECT_TRUE(station.connectEcu());
    EXPECT_EQ(4, heard.count);
    EXPECT_EQ(100, heard.last);
    EXPECT_THAT(QorSetProgress(qor(), nullptr, nullptr), IsCause(QOR_OK));
    EXPECT_TRUE(station.connectEcu());
    EXPECT_EQ(4, heard.count);
}

TEST_P(CConnect, OneThatIsPushedOutOfTheFullQueueEndsAndLeavesRoomForTheNext) {
    station.script = holdsFirstCodes;
    ASSERT_TRUE(station.start());
    std::vector<std::thread> others;
    others.push_back(holdAgent());
    Sleep(300);
    ASSERT_THAT(begin(), IsCause(QOR_OK));
    Sleep(50);
    for (int i = 0; i < 10; ++i) {
        others.emplace_back([handle = qor()] { QorPingQor(handle, 1500); });
        Sleep(30);
    }
    EXPECT_THAT(QorConnectWait(qor(), 8000), IsCause(QOR_PUSHED_OUT));
    for (auto& other : others) other.join();
    EXPECT_THAT(begin(), IsCause(QOR_OK));
    EXPECT_THAT(QorConnectWait(qor(), amplyMs), IsCause(QOR_OK));
}

TEST_P(CConnect, OneThatIsCancelledBeforeItsTurnNeverReachesQor) {
    station.script = holdsFirstCodes;
    ASSERT_TRUE(station.start());
    std::thread other = holdAgent();
    Sleep(300);
    ASSERT_THAT(begin(), IsCause(QOR_OK));
    EXPECT_THAT(QorConnectCancel(qor()), IsCause(QOR_OK));
    EXPECT_THAT(QorConnectWait(qor(), 1000), IsCause(QOR_CANCELLED));
    other.join();
    const std::size_t before = station.wire().size();
    EXPECT_THAT(QorPingQor(qor(), 5000), IsCause(QOR_OK));
    EXPECT_THAT(station.requests(before), ElementsAre(HasSubstr("Ping")));
}

TEST_P(CConnect, TheHostsFunctionMayWaitForTheAgent) {
    struct Seen {
        QorHandle qor = nullptr;
        std::atomic<int> ofPing{-1};
        std::atomic<int> ofWait{-1};
    } seen;
    ASSERT_TRUE(startWith(R"({"result":-1,"durationMs":600,"steps":2,"online":true})"));
    seen.qor = qor();
    const QorProgressFunction ask = [](void* user, int) {
        auto& to = *static_cast<Seen*>(user);
        to.ofWait = QorConnectWait(to.qor, amplyMs);
        to.ofPing = QorPingQor(to.qor, amplyMs);
    };
    EXPECT_THAT(QorSetProgress(qor(), ask, &seen), IsCause(QOR_OK));
    const unsigned took = elapsedMsOf([&] { EXPECT_TRUE(station.connectEcu()); });
    EXPECT_LT(took, 8000u);
    EXPECT_EQ(QOR_OK, seen.ofPing);
    EXPECT_EQ(QOR_NOT_READY, seen.ofWait);
}

TEST_P(CConnect, ClosingEndsItAndWhoWaitsForIt) {
    ASSERT_TRUE(startWith(R"({"result":null,"durationMs":100,"steps":1,"online":false})"));
    ASSERT_THAT(begin(), IsCause(QOR_OK));
    ASSERT_TRUE(awaitsSteps(1));
    std::atomic<int> cause{QOR_OK};
    std::thread waiting([&, handle = qor()] { cause = QorConnectWait(handle, 60000); });
    Sleep(100);
    const unsigned took = elapsedMsOf([&] { EXPECT_EQ(QOR_OK, station.close()); });
    waiting.join();
    EXPECT_LT(took, 6000u);
    EXPECT_THAT(cause.load(), AnyOf(IsCause(QOR_CANCELLED), IsCause(QOR_AGENT_ENDED)));
}

}  // namespace
