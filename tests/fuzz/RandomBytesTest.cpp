// Bytes that no well-meaning peer would send. The sanitizers of the native build watch over it.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "FuzzCases.h"
#include "protocol/RecordStream.h"
#include "RandomRecord.h"
#include "unit/protocol/EveryCommand.h"
#include "unit/protocol/FieldDump.h"

using testing_support::fieldsOf;
using testing_support::forEveryCommand;
using testing_support::hexOf;
using testing_support::payloadOf;
using testing_support::recordFrom;
using testing_support::wordOf;

namespace {

using Prototypes = std::vector<std::unique_ptr<ExternalCommand>>;

Prototypes prototypes() {
    Prototypes all;
    forEveryCommand(
        [&](auto kind) { all.push_back(std::make_unique<typename decltype(kind)::Type>()); });
    return all;
}

/// Makes hostile input: noise, and real payloads that were damaged.
class HostileBytes {
public:
    explicit HostileBytes(std::mt19937& random) : random_(random) {}

    std::string noise(std::uint32_t maxBytes) {
        std::string bytes(below(maxBytes + 1), '\0');
        for (char& byte : bytes) byte = static_cast<char>(random_());
        return bytes;
    }

    template <class Record>
    std::string damagedPayload() {
        std::string bytes = payloadOf(fuzz::randomRecord<Record>(random_));
        for (std::uint32_t left = below(4); left > 0 && !bytes.empty(); --left) damage(bytes);
        return bytes;
    }

    std::uint32_t below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(random_()) % bound;
    }

private:
    void damage(std::string& bytes) {
        static constexpr unsigned int counts[] = {0,    1,        2,          100,
                                                  5000, 0xFFFFFF, 0x7FFFFFFF, 0xFFFFFFFF};
        const std::uint32_t place = below(static_cast<std::uint32_t>(bytes.size()));
        switch (below(4)) {
            case 0:
                bytes[place] = static_cast<char>(random_());
                break;
            case 1:
                bytes.resize(place);
                break;
            case 2:
                bytes.replace(place, 4, wordOf(counts[below(8)]));
                break;
            default:
                bytes.insert(place, noise(8));
        }
    }

    std::mt19937& random_;
};

/// What was read is a fixed point: written and read again it is the same. Readings of thousands
/// of defaulted elements are left out for the sake of time.
template <class Record>
void expectStableReading(const std::string& payload) {
    Record record;
    try {
        wire::Reader(payload).get(record);
    } catch (const std::length_error&) {
        return;
    }
    if (wire::encodedBytes(record) > payload.size() + 2000) return;
    ASSERT_EQ(fieldsOf(recordFrom<Record>(payloadOf(record))), fieldsOf(record)) << hexOf(payload);
}

void expectHonestFrame(const std::string& bytes, std::size_t position) {
    const protocol::FramedRecord record = protocol::recordAt(bytes, position);
    if (record.state != protocol::StreamState::complete) return;
    ASSERT_GE(record.length, 12u) << hexOf(bytes);
    ASSERT_LE(record.length, bytes.size() - position) << hexOf(bytes);
}

}  // namespace

TEST(RandomBytes, NoPayloadUpsetsTheReaderOfAnyRecord) {
    std::printf("seed %u\n", fuzz::seed);
    std::mt19937 random(fuzz::seed);
    HostileBytes hostile(random);
    const unsigned int casesEach = fuzz::caseCount(200000) / 19;
    forEveryCommand([&](auto kind) {
        using Record = typename decltype(kind)::Record;
        for (unsigned int i = 0; i < casesEach; ++i) {
            const bool isNoise = i % 3 == 0;
            expectStableReading<Record>(isNoise ? hostile.noise(100)
                                                : hostile.damagedPayload<Record>());
            if (testing::Test::HasFatalFailure()) return;
        }
    });
}

TEST(RandomBytes, NoBufferUpsetsTheFraming) {
    std::printf("seed %u\n", fuzz::seed);
    std::mt19937 random(fuzz::seed);
    HostileBytes hostile(random);
    const unsigned int cases = fuzz::caseCount(20000);
    for (unsigned int i = 0; i < cases && !testing::Test::HasFatalFailure(); ++i) {
        std::string bytes = hostile.noise(60);
        // Lengths that could be true, or all but one record in four billion would be hopeless.
        if (bytes.size() >= 12) bytes.replace(8, 4, wordOf(hostile.below(64)));
        for (std::size_t position = 0; position <= bytes.size(); ++position)
            expectHonestFrame(bytes, position);
    }
}

TEST(RandomBytes, NoRecordUpsetsThePrototypes) {
    std::printf("seed %u\n", fuzz::seed);
    std::mt19937 random(fuzz::seed);
    HostileBytes hostile(random);
    const Prototypes all = prototypes();
    const unsigned int cases = fuzz::caseCount(4000);
    for (unsigned int i = 0; i < cases; ++i) {
        const std::string payload = hostile.noise(80);
        const unsigned int length = static_cast<unsigned int>(payload.size()) + hostile.below(3);
        const std::string bytes = wordOf(hostile.below(21)) + wordOf(i) + wordOf(length) + payload;
        for (const auto& prototype : all) {
            std::size_t consumed = 0;
            const auto parsed = prototype->parse(bytes, consumed);
            ASSERT_TRUE(consumed == 0 || consumed == 12u + length) << hexOf(bytes);
            ASSERT_LE(consumed, bytes.size()) << hexOf(bytes);
            ASSERT_TRUE(!parsed || consumed != 0) << hexOf(bytes);
        }
    }
}
