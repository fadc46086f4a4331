#include "common/Guarded.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "TestThread.h"

using common::Guarded;
using testing_support::TestThread;

namespace {

struct State {
    int number = 3;
    std::string text = "initial";
};

void addOneManyTimes(Guarded<State>& guarded, int times) {
    for (int i = 0; i < times; ++i) {
        auto state = guarded.lock();
        const int read = state->number;
        state->number = read + 1;
    }
}

}  // namespace

TEST(Guarded, HoldsTheInitialValueAndWhatIsWritten) {
    Guarded<State> guarded;
    EXPECT_EQ(guarded.lock()->number, 3);
    guarded.lock()->text = "new";
    EXPECT_EQ((*guarded.lock()).text, "new");
}

TEST(Guarded, AnotherThreadWaitsUntilTheAccessIsLetGo) {
    Guarded<State> guarded;
    int seen = 0;
    std::unique_ptr<TestThread> reader;
    {
        auto access = guarded.lock();
        reader = std::make_unique<TestThread>([&] { seen = guarded.lock()->number; });
        EXPECT_FALSE(reader->endsWithin(50));
        access->number = 4;
    }
    reader->join();
    EXPECT_EQ(seen, 4);
}

TEST(Guarded, NoIncrementOfTwoThreadsIsLost) {
    Guarded<State> guarded;
    {
        TestThread first([&] { addOneManyTimes(guarded, 100000); });
        TestThread second([&] { addOneManyTimes(guarded, 100000); });
    }
    EXPECT_EQ(guarded.lock()->number, 200003);
}
