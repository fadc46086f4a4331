#include <limits>
#include <thread>

#include "ClientFixture.h"
#include "support/FakeMonitor.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

constexpr std::int32_t ecuOnline = -10;
constexpr std::int32_t progress = -11;
constexpr std::int32_t result = -12;

/// Connects with a monitor; QOR's reports come when the test has set them.
class Bootstrap : public ClientTest {
protected:
    struct CountingCallback final : ClientExternalOperating::ConnectCallback {
        void onProgress() override {
            ++calls;
            if (then) then();
        }
        void onFigure(std::int32_t figure, std::uint32_t steps) override {
            figures.push_back(figure);
            lastSteps = steps;
        }
        int calls = 0;
        std::vector<std::int32_t> figures;
        std::uint32_t lastSteps = 0;
        std::function<void()> then;
    };

    /// QOR reports this so much time after the connect began (queries for the state are left
    /// without answer).
    void reportsAfter(std::uint32_t ms, std::int32_t id, double value) {
        clock.after(ms, [this, id, value] { qor.sendValue(id, value); });
    }

    /// From then on QOR answers each query for the state with "online".
    void isOnlineAfter(std::uint32_t ms) {
        const std::uint32_t from = clock.now() + ms;
        qor.on<CommandKwpConnect>([this, from](const CommandKwpConnect& command) {
            if (command.mode == 2 && clock.now() >= from) qor.sendValue(ecuOnline, 1.0);
            return true;
        });
    }

    bool connect() { return client().connectEcu(record, &monitor, callback); }

    void expectFailure(const std::string& message) {
        EXPECT_FALSE(connect());
        EXPECT_THAT(monitor.reports, ElementsAre(Pair("Bootstrap failed - " + message, 0u)));
    }

    protocol::KwpConnect record;
    FakeMonitor monitor;
    CountingCallback callback;
};

TEST_F(Bootstrap, ASuccessfulResultAndAnEcuOnlineMakeTheConnectSucceed) {
    client();
    reportsAfter(50, result, -1);
    isOnlineAfter(100);
    EXPECT_TRUE(connect());
    EXPECT_THAT(monitor.reports, IsEmpty());
    EXPECT_EQ(monitor.strayCalls, 0);
}

TEST_F(Bootstrap, TheRequestIsTheRecordAndGivesQor10Seconds) {
    record.protocol = 2;
    record.canRequestId = 0x7E0;
    qor.acknowledges = false;
    EXPECT_FALSE(connect());
    ASSERT_THAT(qor.sent(), SizeIs(1));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 10000u);
    EXPECT_EQ(qor.last<CommandKwpConnect>().protocol, 2u);
    EXPECT_EQ(qor.last<CommandKwpConnect>().canRequestId, 0x7E0u);
}

TEST_F(Bootstrap, ARequestThatQorDoesNotTakeFailsWithoutAReport) {
    qor.acknowledges = false;
    EXPECT_FALSE(connect());
    EXPECT_THAT(monitor.reports, IsEmpty());
    EXPECT_EQ(monitor.polls, 0);
}

TEST_F(Bootstrap, WithoutAMonitorTheAcceptedRequestIsTheSuccess) {
    EXPECT_TRUE(client().connectEcu(record, nullptr, callback));
    EXPECT_THAT(qor.sent(), SizeIs(1));
    EXPECT_EQ(callback.calls, 0);
}

TEST_F(Bootstrap, AFailureThatQorReportsIsTold) {
    reportsAfter(10, result, -2);
    expectFailure("QOR reported");
}

TEST_F(Bootstrap, AnyOtherResultIsAnUnknownCode) {
    for (const double code : {0.0, 1.0, -3.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        monitor.reports.clear();
        reportsAfter(10, result, code);
        expectFailure("unknown code");
    }
}

TEST_F(Bootstrap, AMonitorThatCancelsBeforeAnyResultFailsTheConnect) {
    monitor.cancelled = true;
    expectFailure("cancelled");
}

TEST_F(Bootstrap, AMonitorCanCancelLaterInTheFirstPhase) {
    clock.after(500, [this] { monitor.cancelled = true; });
    const std::uint32_t start = clock.now();
    expectFailure("cancelled");
    EXPECT_EQ(clock.now() - start, 500u);
}

TEST_F(Bootstrap, AMonitorCanCancelWhileTheEcuIsAwaited) {
    reportsAfter(10, result, -1);
    clock.after(700, [this] { monitor.cancelled = true; });
    const std::uint32_t start = clock.now();
    expectFailure("cancelled");
    EXPECT_EQ(clock.now() - start, 700u);
}

TEST_F(Bootstrap, AResultOfSuccessWithoutAnEcuOnlineFailsAfter15Seconds) {
    reportsAfter(10, result, -1);
    const std::uint32_t start = clock.now();
    expectFailure("timeout");
    EXPECT_EQ(clock.now() - start, 10u + 15001u);
}

TEST_F(Bootstrap, TheEcuIsAwaitedForAsLongAcrossTheWrapOfTheTickCount) {
    for (const std::uint32_t msBefore : {15012u, 15000u, 5000u, 11u}) {
        SCOPED_TRACE(msBefore);
        monitor.reports.clear();
        clock.advanceToBeforeWrap(msBefore);
        reportsAfter(10, result, -1);
        const std::uint32_t start = clock.now();
        expectFailure("timeout");
        EXPECT_EQ(clock.now() - start, 10u + 15001u);
    }
}

TEST_F(Bootstrap, AnEcuThatComesOnlineInTheLastSecondIsConnected) {
    reportsAfter(10, result, -1);
    isOnlineAfter(14500);
    EXPECT_TRUE(connect());
}

TEST_F(Bootstrap, TheFirstPhaseHasNoTimeLimit) {
    clock.msPerSleptMs = 10000;
    reportsAfter(36000000, result, -2);
    const std::uint32_t start = clock.now();
    expectFailure("QOR reported");
    EXPECT_EQ(clock.now() - start, 36000000u);
}

TEST_F(Bootstrap, AClientThatEndsInTheFirstPhaseIsSomeProblem) {
    clock.after(20, [this] { client().stopOperating(); });
    expectFailure("some problem");
}

TEST_F(Bootstrap, AClientThatEndsWhileTheEcuIsAwaitedIsSomeProblem) {
    reportsAfter(10, result, -1);
    clock.after(20, [this] { client().stopOperating(); });
    expectFailure("some problem");
}

TEST_F(Bootstrap, ResultsAreTakenOldestFirst) {
    client();
    clock.after(10, [this] {
        qor.sendValue(result, -2);
        qor.sendValue(result, -1);
    });
    isOnlineAfter(0);
    expectFailure("QOR reported");
}

TEST_F(Bootstrap, ResultsOfAnEarlierConnectAreForgotten) {
    client();
    qor.sendValue(result, -2);
    reportsAfter(10, result, -1);
    isOnlineAfter(0);
    EXPECT_TRUE(connect());
}

TEST_F(Bootstrap, AResultThatComesDuringTheRequestIsLost) {
    qor.on<CommandKwpConnect>([this](const CommandKwpConnect&) {
        qor.sendValue(result, -2);
        return true;
    });
    clock.after(100, [this] { monitor.cancelled = true; });
    expectFailure("cancelled");
}

TEST_F(Bootstrap, AResultIsSeenBeforeACancellation) {
    clock.after(10, [this] {
        monitor.cancelled = true;
        qor.sendValue(result, -2);
    });
    expectFailure("QOR reported");
}

TEST_F(Bootstrap, AnEcuOnlineIsSeenBeforeACancellation) {
    clock.after(10, [this] {
        monitor.cancelled = true;
        qor.sendValue(result, -1);
    });
    isOnlineAfter(0);
    EXPECT_TRUE(connect());
    EXPECT_THAT(monitor.reports, IsEmpty());
}

TEST_F(Bootstrap, ACancellationIsSeenBeforeTheTimeout) {
    reportsAfter(10, result, -1);
    clock.after(15011, [this] { monitor.cancelled = true; });
    expectFailure("cancelled");
}

TEST_F(Bootstrap, EachChangeOfTheProgressIsToldOnce) {
    reportsAfter(10, progress, 0);
    reportsAfter(20, progress, 0.9);  // still 0 as an integer
    reportsAfter(30, progress, 7);
    reportsAfter(40, progress, 7);
    reportsAfter(50, progress, 100);
    reportsAfter(60, result, -2);
    expectFailure("QOR reported");
    EXPECT_EQ(callback.calls, 3);
    EXPECT_THAT(callback.figures, ElementsAre(0, 0, 7, 7, 100));
    EXPECT_EQ(callback.lastSteps, 5u);
}

TEST_F(Bootstrap, TheLastFigureIsToldAlsoWhenTheResultComesRightBehindIt) {
    client();
    isOnlineAfter(0);
    reportsAfter(10, progress, 50);
    reportsAfter(20, progress, 100);
    reportsAfter(20, result, -1);
    EXPECT_TRUE(connect());
    EXPECT_THAT(callback.figures, ElementsAre(50, 100));
    EXPECT_EQ(callback.lastSteps, 2u);
}

TEST_F(Bootstrap, WithoutProgressNothingIsTold) {
    reportsAfter(60, result, -2);
    connect();
    EXPECT_EQ(callback.calls, 0);
}

TEST_F(Bootstrap, ProgressIsToldWhileTheEcuIsAwaited) {
    reportsAfter(10, result, -1);
    reportsAfter(20, progress, 50);
    reportsAfter(30, progress, 60);
    clock.after(100, [this] { monitor.cancelled = true; });
    connect();
    EXPECT_EQ(callback.calls, 2);
}

TEST_F(Bootstrap, ProgressThatAnEarlierConnectLeftIsToldAtOnce) {
    client();
    qor.sendValue(progress, 30);
    std::uint32_t toldAt = 0;
    callback.then = [&] { toldAt = clock.now(); };
    const std::uint32_t start = clock.now();
    reportsAfter(60, result, -2);
    connect();
    EXPECT_EQ(callback.calls, 1);
    EXPECT_EQ(callback.lastSteps, 0u);  // none of this connect
    EXPECT_EQ(toldAt, start);
}

TEST_F(Bootstrap, TheFallOfTheProgressAtTheResultIsToldWhileTheEcuIsAwaited) {
    reportsAfter(10, progress, 30);
    reportsAfter(20, result, -1);
    clock.after(100, [this] { monitor.cancelled = true; });
    connect();
    EXPECT_EQ(callback.calls, 2);
}

TEST_F(Bootstrap, TheCallbackAndTheMonitorMayCallTheClient) {
    // They run outside the client's lock: a second thread gets at the client's state meanwhile.
    client();
    bool handled = false;
    callback.then = [&] { std::thread([&] { handled = qor.sendValue(99, 1.0); }).join(); };
    reportsAfter(10, progress, 30);
    reportsAfter(20, result, -2);
    connect();
    EXPECT_TRUE(handled);
}

}  // namespace
