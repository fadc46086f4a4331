#include "facade/ValueRing.h"

#include <gmock/gmock.h>

#include <thread>

using qorcontrol::Arrival;
using sinkstreams::ValueRing;
using testing::ElementsAre;

namespace {

channel::Sample sample(std::size_t name, double value, std::uint64_t missed = 0) {
    return {name, value, common::Moment(1000), missed};
}

class Ring : public testing::Test {
protected:
    ValueRing ring{3, 2};
    Arrival samples[8] = {};

    std::optional<unsigned> readInto(unsigned capacity, unsigned timeoutMs) {
        return ring.read(capacity, timeoutMs,
                         [this](unsigned i, const Arrival& each) { samples[i] = each; });
    }
    /// What is read at once, as values.
    std::vector<double> read(unsigned capacity = 8) {
        const auto got = readInto(capacity, 0);
        std::vector<double> values;
        for (unsigned i = 0; got && i < *got; ++i) values.push_back(samples[i].value);
        return values;
    }
};

TEST_F(Ring, GivesTheOldestFirstAndNoMoreThanThereIsRoomFor) {
    ring.take(sample(0, 1));
    ring.take(sample(1, 2));
    ring.take(sample(0, 3));
    EXPECT_THAT(read(2), ElementsAre(1, 2));
    EXPECT_EQ(1u, samples[1].name);
    EXPECT_EQ(1000u, samples[1].timeMs);
    EXPECT_THAT(read(2), ElementsAre(3));
    EXPECT_THAT(read(2), ElementsAre());
}

TEST_F(Ring, TheOldestGoWhenItIsFullAndAreCountedForTheirName) {
    ring.take(sample(0, 1));
    ring.take(sample(1, 2));
    for (int value = 3; value <= 5; ++value) ring.take(sample(0, value));
    EXPECT_THAT(read(), ElementsAre(3, 4, 5));
    EXPECT_EQ(1u, samples[0].missed);
    EXPECT_EQ(1u, samples[2].missed);
    ring.take(sample(1, 6));
    EXPECT_THAT(read(), ElementsAre(6));
    EXPECT_EQ(1u, samples[0].missed);  // the 2
}

TEST_F(Ring, WhatNeverArrivedIsCountedFromThenOn) {
    ring.take(sample(0, 1));
    ring.take(sample(0, 2, 10));
    ring.take(sample(0, 3));
    EXPECT_THAT(read(), ElementsAre(1, 2, 3));
    EXPECT_EQ(0u, samples[0].missed);
    EXPECT_EQ(10u, samples[1].missed);
    EXPECT_EQ(10u, samples[2].missed);
}

TEST_F(Ring, AReaderWaitsForAValue) {
    std::thread writer([this] {
        common::sleepMs(50);
        ring.take(sample(0, 4));
    });
    const auto got = readInto(8, 10000);
    writer.join();
    EXPECT_EQ(1u, got);
}

TEST_F(Ring, ClosingSendsAllReadersAway) {
    std::vector<std::thread> readers;
    std::atomic<int> sentAway{0};
    for (int i = 0; i < 4; ++i)
        readers.emplace_back([&] {
            if (!ring.read(1, 60000, [](unsigned, const Arrival&) {})) ++sentAway;
        });
    common::sleepMs(50);
    ring.close();
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ(4, sentAway);
}

TEST_F(Ring, WhatIsThereWhenItIsClosedCanBeReadAndNothingComesBehindIt) {
    ring.take(sample(0, 1));
    ring.close();
    ring.take(sample(0, 2));
    EXPECT_THAT(read(), ElementsAre(1));
    EXPECT_EQ(std::nullopt, readInto(8, 0));
}

}  // namespace
