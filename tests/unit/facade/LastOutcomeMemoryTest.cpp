// A thread's last outcome where there is no memory, in a program of its own: it takes the place of
// operator new.

#include <gtest/gtest.h>

#include <new>
#include <thread>

#include "facade/LastOutcome.h"
#include "qorcontrol/Outcome.h"
#include "unit/trace/NoMemory.h"

using qorcontrol::Cause;
using qorcontrol::lastOutcome;
using qorcontrol::Outcome;
using testing_support::NoMemory;

namespace {

const lastoutcome::Ended refused{{Cause::refused, "of this test", false}, nullptr, 7};

TEST(LastOutcomeWithoutMemory, IsOutOfMemoryWithEmptyTextsAndThenWhatItWas) {
    lastoutcome::note(refused);
    Outcome outcome;
    int refusals = 0;
    {
        const NoMemory memory;
        outcome = lastOutcome();
        refusals = memory.refusals();
    }
    EXPECT_GT(refusals, 0);
    EXPECT_EQ(outcome.cause, Cause::outOfMemory);
    EXPECT_EQ(outcome.elapsedMs, 7u);
    EXPECT_TRUE(outcome.sentence.empty());
    EXPECT_TRUE(outcome.check.empty());
    EXPECT_EQ(lastOutcome().cause, Cause::refused);
    EXPECT_EQ(lastOutcome().sentence, "QOR refused the request: of this test.");
}

TEST(LastOutcomeWithoutMemory, IsNotedOnceTheThreadHasItsPlace) {
    lastoutcome::note({});
    int refusals = 0;
    {
        const NoMemory memory;
        lastoutcome::note(refused);
        refusals = memory.refusals();
    }
    EXPECT_EQ(refusals, 0);
    EXPECT_EQ(lastOutcome().cause, Cause::refused);
}

TEST(LastOutcomeWithoutMemory, OfAThreadThatGotNoPlaceIsOutOfMemory) {
    std::thread([] {
        {
            const NoMemory memory;
            lastoutcome::note(refused);
        }
        EXPECT_EQ(lastOutcome().cause, Cause::outOfMemory);
        lastoutcome::note({});
        EXPECT_EQ(lastOutcome().cause, Cause::none);
    }).join();
}

}  // namespace
