#include "behaviour/Flood.h"

#include <set>

#include "TestSupport.h"
#include "wire/RecordStream.h"

namespace simulator::test {
namespace {

constexpr FloodEffect flood{10000, 7, 64, 0};

bool holdsRecord(const std::string& bytes) {
    RecordStream stream;
    stream.append(bytes);
    try {
        return stream.next().has_value();
    } catch (const StreamBroken&) {
        return false;
    }
}

TEST(Flood, NoMessageIsOneThatAClientWouldAccept) {
    for (std::uint32_t number = 0; number < flood.count; ++number) {
        const Delivery message = floodMessage(flood, number);
        if (message.form.tag != 3084 || message.form.nullLength) continue;
        EXPECT_FALSE(holdsRecord(message.raw)) << number;
    }
}

TEST(Flood, EveryWayToBeRefusedOccurs) {
    int nulls = 0;
    int otherTags = 0;
    int stumps = 0;
    std::set<std::uint32_t> cutIds;
    for (std::uint32_t number = 0; number < flood.count; ++number) {
        const Delivery message = floodMessage(flood, number);
        if (message.form.nullLength) {
            ++nulls;
        } else if (message.form.tag != 3084) {
            ++otherTags;
        } else if (message.raw.size() < 12) {
            ++stumps;
        } else {
            cutIds.insert(static_cast<unsigned char>(message.raw[0]));
        }
    }
    EXPECT_GT(nulls, 1000);
    EXPECT_GT(otherTags, 1000);
    EXPECT_GT(stumps, 1000);
    EXPECT_EQ(cutIds.size(), 20U);
}

TEST(Flood, TheSameSeedGivesTheSameMessages) {
    FloodEffect other = flood;
    other.seed = 8;
    int differences = 0;
    for (std::uint32_t number = 0; number < 100; ++number) {
        const std::string raw = floodMessage(flood, number).raw;
        EXPECT_EQ(raw, floodMessage(flood, number).raw);
        if (raw != floodMessage(other, number).raw) ++differences;
    }
    EXPECT_GT(differences, 50);
}

}  // namespace
}  // namespace simulator::test
