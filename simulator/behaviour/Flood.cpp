#include "behaviour/Flood.h"

#include <random>

#include "wire/Writer.h"

namespace simulator {

namespace {

constexpr std::uint32_t highestId = 19;
constexpr std::uint32_t replyFlag = 0x10000;

std::string randomBytes(std::mt19937& random, std::size_t count) {
    std::string bytes(count, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random() & 0xFFU);
    return bytes;
}

/// The begin of a record of a known kind whose payload is shorter than announced. A parser that
/// trusts the length reads behind the end.
std::string cutRecord(std::mt19937& random, std::uint32_t maxBytes) {
    const auto header =
        static_cast<std::uint32_t>(random() % (highestId + 1) | (random() & replyFlag));
    const std::string payload = randomBytes(random, random() % (maxBytes + 1));
    const std::uint32_t missing = random() % 2 == 0 ? 1U : 1U + (random() >> 1U);
    const auto requestId = static_cast<std::uint32_t>(random());
    const auto length = static_cast<std::uint32_t>(payload.size()) + missing;
    return Writer().u32(header).u32(requestId).u32(length).take() + payload;
}

/// Too short for a record, of any content.
std::string stump(std::mt19937& random) {
    return randomBytes(random, random() % 12);
}

}  // namespace

Delivery floodMessage(const FloodEffect& flood, std::uint32_t number) {
    std::seed_seq seed{flood.seed, number};
    std::mt19937 random(seed);
    Delivery message;
    switch (random() % 8) {
        case 0:
            message.form.nullLength = random();
            break;
        case 1:
            message.form.nullLength = random() % 64;
            break;
        case 2:
        case 3:
            message.raw = stump(random);
            break;
        case 4:
        case 5:
            message.form.tag = recordTag ^ (1U << (random() % 32));
            message.raw = randomBytes(random, random() % (flood.maxBytes + 1));
            break;
        default:
            message.raw = cutRecord(random, flood.maxBytes);
    }
    return message;
}

}  // namespace simulator
