// The special values of a time-out, for every operation that takes one: a call ends in the time
// that they mean, and the station is well again behind it.

#include <gmock/gmock.h>

#include "OperationTable.h"
#include "Station.h"
#include "Waiting.h"

namespace {

constexpr unsigned amply = 3000;
constexpr unsigned freeMs = 15000;  ///< until the agent has carried out what was given up
constexpr unsigned atOnceMs = 1000;
constexpr unsigned noLimit = 0xFFFFFFFFu;
constexpr unsigned usual = 0xFFFFFFFEu;
constexpr unsigned doubleIsZero = 0x80000000u;

class Timeouts : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};

    struct Outcome {
        bool done = false;
        unsigned elapsedMs = 0;
    };
    Outcome call(const OperationRow& row, unsigned timeoutMs) {
        Outcome outcome;
        std::string results;
        if (row.prepare) row.prepare(station.facade());
        outcome.elapsedMs =
            elapsedMsOf([&] { outcome.done = row.call(station.facade(), timeoutMs, results); });
        EXPECT_EQ(outcome.done ? row.results : std::string(), results);
        return outcome;
    }
    bool isFree() { return station->pingQor(freeMs); }

    /// Over TCP a request with a time-out of 0 waits for no acknowledgement: it has succeeded when
    /// it is on its way, and the agent may have said so before the caller looks, once, at 0 ms.
    static bool maySucceedUnheard(const OperationRow& row, unsigned timeoutMs) {
        return row.acknowledgementIsAll && timeoutMs == 0 && GetParam() == Transport::tcp;
    }

    /// All operations with a time-out of the caller's.
    template <class Action>
    void forEachTimed(Action action) {
        for (const OperationRow& row : operationTable()) {
            if (!row.heedsTimeout || std::string(row.name) == "getParamDescription") continue;
            SCOPED_TRACE(row.name);
            action(row);
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Timeouts, everyTransport(), transportName);

TEST_P(Timeouts, NoneAtAllEndsAtOnceAndTheNextCallIsWellAgain) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    forEachTimed([this](const OperationRow& row) {
        for (const unsigned timeoutMs : {0u, 1u, doubleIsZero}) {
            SCOPED_TRACE(timeoutMs);
            EXPECT_LE(call(row, timeoutMs).elapsedMs, atOnceMs);
            EXPECT_TRUE(isFree());
        }
        EXPECT_TRUE(call(row, amply).done);
    });
}

TEST_P(Timeouts, TheTransportsUsualOneIsPlentyForWhateverOnlyHasToBeTaken) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    forEachTimed([this](const OperationRow& row) {
        const Outcome outcome = call(row, usual);
        // Where results are waited for as well, the end of that wait wraps to the past: an answer
        // counts only if it is there with the acknowledgement.
        if (row.results.empty()) {
            EXPECT_TRUE(outcome.done);
        }
        EXPECT_LE(outcome.elapsedMs, 2500u);
        EXPECT_TRUE(call(row, amply).done);
    });
}

TEST_P(Timeouts, WithoutALimitACallEndsAsSoonAsTheAgentAnswers) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    forEachTimed([this](const OperationRow& row) {
        // Over TCP QOR is given next to no time then, and may be too slow.
        const Outcome outcome = call(row, noLimit);
        EXPECT_LE(outcome.elapsedMs, 5000u);
        if (GetParam() == Transport::window) {
            EXPECT_TRUE(outcome.done);
        }
        EXPECT_TRUE(call(row, amply).done);
    });
}

TEST_P(Timeouts, NoneAtAllEndsAtOnceBeforeASilentQorToo) {
    std::vector<Rule> rules;
    for (const OperationRow& row : operationTable())
        if (row.heedsTimeout) rules.push_back({row.decisiveRequest, silence(GetParam(), 50)});
    station.script = scriptOf(rules);
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    forEachTimed([this](const OperationRow& row) {
        for (const unsigned timeoutMs : {0u, 1u}) {
            SCOPED_TRACE(timeoutMs);
            const Outcome outcome = call(row, timeoutMs);
            EXPECT_TRUE(!outcome.done || maySucceedUnheard(row, timeoutMs));
            EXPECT_LE(outcome.elapsedMs, atOnceMs);
        }
        EXPECT_TRUE(isFree());
    });
}

}  // namespace
