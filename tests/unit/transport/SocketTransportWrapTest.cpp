#include <gtest/gtest.h>

#include <atomic>

#include "common/ClockSeam.h"
#include "SocketTransportSupport.h"

namespace {

using tcp::pingAnswer;

/// Moves only when the test says so; sleeps are real ones.
class ClockMovedByHand final : public common::IClock {
public:
    explicit ClockMovedByHand(std::uint32_t start) : tick_(start) { common::replaceClock(this); }
    ~ClockMovedByHand() { common::replaceClock(nullptr); }
    ClockMovedByHand(const ClockMovedByHand&) = delete;
    ClockMovedByHand& operator=(const ClockMovedByHand&) = delete;

    std::uint32_t tickCount() override { return tick_; }
    void sleepMs(unsigned int ms) override { Sleep(ms); }
    void advance(std::uint32_t ms) { tick_ += ms; }

private:
    std::atomic<std::uint32_t> tick_;
};

/// The system's count of milliseconds begins again at 0 while requests are on their way.
class SocketTransportWrap : public testing::Test {
protected:
    static constexpr std::uint32_t msBefore = 300;

    SocketTransportWrap() { peer.accept(); }

    /// Enough real time for several passes of the worker.
    static void letTheWorkerWork() { Sleep(100); }

    ClockMovedByHand clock{0u - msBefore};
    tcp::TcpPeer peer;
    TestTransport transport{peer.port()};
};

TEST_F(SocketTransportWrap, ARequestThatMayLastBeyondItIsNotGivenUpBefore) {
    std::future<bool> result = sendOnThread(transport, 500);
    const std::uint32_t id = peer.expectRecord().requestId;
    letTheWorkerWork();
    peer.send(pingAnswer(id, 1));
    EXPECT_TRUE(result.get());
}

TEST_F(SocketTransportWrap, ItIsAnsweredInTimeBehindIt) {
    std::future<bool> result = sendOnThread(transport, 500);
    const std::uint32_t id = peer.expectRecord().requestId;
    letTheWorkerWork();  // the request's time begins before the clock moves
    clock.advance(500);
    letTheWorkerWork();
    peer.send(pingAnswer(id, 1));
    EXPECT_TRUE(result.get());
}

TEST_F(SocketTransportWrap, ItIsGivenUpBehindItWhenItsTimeIsOver) {
    std::future<bool> result = sendOnThread(transport, 500);
    peer.expectRecord();
    letTheWorkerWork();
    clock.advance(501);
    EXPECT_FALSE(result.get());
}

TEST_F(SocketTransportWrap, ARequestThatEndedBeforeItStaysEnded) {
    std::future<bool> result = sendOnThread(transport, 200);
    peer.expectRecord();
    letTheWorkerWork();
    clock.advance(200);
    letTheWorkerWork();
    EXPECT_NE(result.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    clock.advance(101);  // at tick 1
    EXPECT_FALSE(result.get());
}

}  // namespace
