#include "StreamDtcFixture.h"
#include "support/TcpProcessFigures.h"

namespace {

constexpr std::uint32_t refreshMs = 100;
constexpr std::uint32_t roundMs = 50;
constexpr std::uint32_t secondMs = 1000;
constexpr std::uint32_t hourMs = 3600 * secondMs;
constexpr std::uint32_t codesEveryMs = 2 * secondMs;
constexpr std::int32_t parameters = 12;
constexpr std::int32_t stalling = 12;
constexpr unsigned int slots = 10;

/// What the process holds.
struct Figures {
    std::size_t heap = tcp::heapBytes();
    std::size_t memory = tcp::memoryBytes();
    std::uintptr_t nextHandle = tcp::nextFreeHandle();
    unsigned threads = tcp::threadCount();
};

/// An hour of twelve values and the trouble codes, in rounds that take no time but the clock's.
/// QOR sends each value as the tick at which it does so.
class StreamHour : public StreamDtcs {
protected:
    StreamHour() {
        channel->values.setReadPeriod(refreshMs);
        qor.on<CommandKwpConnect>([this](const CommandKwpConnect&) {
            qor.handOverValue(-10, 1.0);  // the ECU is online
            return true;
        });
        Names names;
        for (std::int32_t index = 1; index <= parameters; ++index) {
            names.push_back("P" + std::to_string(index));
            qor.knows(names.back(), index);
        }
        registers(values, names);
        streamsEvery(codesEveryMs);
    }

    void qorSendsValues() {
        const double now = clock.now();
        for (std::int32_t index = 1; index <= parameters; ++index)
            if (index != stalling || !stalls) qor.handOverValue(index, now);
        if (clock.now() % secondMs < refreshMs) qor.sendValue(1, now);  // now and then as a record
    }

    /// One refresh period: QOR sends, the agent goes its rounds, the host takes one batch.
    void period() {
        const std::uint32_t start = clock.now();
        qorSendsValues();
        while (clock.now() - start < refreshMs) {
            idleRound();
            clock.advance(roundMs);
        }
        Values batch;
        if (values.pop(batch, 0)) judge(batch);
        if (clock.now() % (3 * codesEveryMs) < refreshMs) takeCodes();
        qor.forgetSent();
        qor.events.clear();
    }
    void judge(const Values& batch) {
        ++batches;
        if (batch.size() < parameters) ++shortBatches;
        for (const auto& each : batch) {
            const double age = clock.now() - each.values.at(0);
            if (age > oldestMs) oldestMs = age;
        }
    }
    void takeCodes() {
        for (std::string told = nextCodes(); told != "-"; told = nextCodes())
            ++(told == "1 codes" ? codeLists : markers);
    }
    void periodsFor(std::uint32_t ms) {
        const std::uint32_t start = clock.now();
        while (clock.now() - start < ms) period();
    }

    ParamQueue values{slots};
    bool stalls = false;
    int batches = 0;
    int shortBatches = 0;
    double oldestMs = 0;
    int codeLists = 0;
    int markers = 0;
};

TEST_F(StreamHour, BatchesKeepComingNothingIsStaleAndMemoryAndHandlesAreFlat) {
    periodsFor(120 * secondMs);
    const Figures before;
    for (int minute = 2; minute < 60; ++minute) {
        const int batchesBefore = batches;
        periodsFor(60 * secondMs);
        // A full queue costs the agent a millisecond now and then.
        EXPECT_GE(batches - batchesBefore, 560) << "minute " << minute;
    }
    const Figures after;
    EXPECT_GE(clock.now() - 1000000, hourMs);
    EXPECT_EQ(shortBatches, 0);
    // Fresh when it was put into the queue, and then behind a queue full of others.
    EXPECT_LT(oldestMs, 3 * refreshMs + slots * (roundMs + 2));
    EXPECT_GE(codeLists, static_cast<int>(hourMs / codesEveryMs) - 5);
    EXPECT_EQ(markers, 0);
    EXPECT_LE(after.heap, before.heap + 4096);
    EXPECT_LE(after.memory, before.memory + 256 * 1024);
    EXPECT_EQ(after.nextHandle, before.nextHandle);
    EXPECT_EQ(after.threads, before.threads);
}

TEST_F(StreamHour, AParameterThatStallsForAMinuteIsAbsentForThatMinute) {
    periodsFor(60 * secondMs);
    EXPECT_EQ(shortBatches, 0);
    stalls = true;
    periodsFor(2 * secondMs);  // its last values are still in the queue
    batches = shortBatches = 0;
    periodsFor(58 * secondMs);
    EXPECT_GT(batches, 500);
    EXPECT_EQ(shortBatches, batches);
    stalls = false;
    periodsFor(2 * secondMs);
    batches = shortBatches = 0;
    periodsFor(58 * secondMs);
    EXPECT_GT(batches, 500);
    EXPECT_EQ(shortBatches, 0);
}

}  // namespace
