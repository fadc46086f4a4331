#include "protocol/Wire.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace wire {

static_assert(sizeof(double) == 8, "doubles travel as 8-byte IEEE images");

namespace {

/// An entry of a map in memory: two texts, and what the tree needs to hold them.
constexpr std::size_t mapEntryBytes = 2 * sizeof(std::string) + 6 * sizeof(void*);

}  // namespace

void Writer::put(double value) {
    std::uint64_t image = 0;
    std::memcpy(&image, &value, sizeof image);
    put(static_cast<std::uint32_t>(image));
    put(static_cast<std::uint32_t>(image >> 32));
}

void Writer::put(const std::string& text) {
    put(static_cast<std::uint32_t>(text.size()));
    out_ += text;
}

void Writer::put(const std::map<std::string, std::string>& entries) {
    put(static_cast<std::uint32_t>(entries.size()));
    for (const auto& entry : entries) {
        put(entry.first);
        put(entry.second);
    }
}

void Counter::put(const std::map<std::string, std::string>& entries) {
    bytes_ += 4;
    for (const auto& entry : entries) {
        put(entry.first);
        put(entry.second);
    }
}

void Reader::get(std::int32_t& value) {
    std::uint32_t word = static_cast<std::uint32_t>(value);
    get(word);
    value = static_cast<std::int32_t>(word);
}

void Reader::get(std::uint8_t& value) {
    std::uint32_t word = value;
    get(word);
    value = static_cast<std::uint8_t>(word);
}

void Reader::get(bool& value) {
    std::uint32_t word = value ? 1 : 0;
    get(word);
    value = word == 1;
}

void Reader::get(double& value) {
    if (remaining() < 8) return;
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    get(low);
    get(high);
    const std::uint64_t image = (static_cast<std::uint64_t>(high) << 32) | low;
    std::memcpy(&value, &image, sizeof value);
}

void Reader::get(std::string& text) {
    const std::size_t start = position_;
    std::uint32_t length = 0;
    get(length);
    if (position_ == start || length > remaining()) {
        position_ = start;
        return;
    }
    text = payload_.substr(position_, length);
    position_ += length;
}

void Reader::get(std::map<std::string, std::string>& entries) {
    std::uint32_t count = 0;
    get(count);
    entries.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t before = position_;
        charge(1, mapEntryBytes);
        std::string key;
        std::string value;
        get(key);
        get(value);
        // An entry that is not there has the empty key, as has every one behind it.
        entries[key] = value;
        if (position_ == before) return;
    }
}

void Reader::get(common::Doubles& values) {
    std::vector<double> read;
    get(read);
    values = std::move(read);
}

void Reader::copyImages(void* to, std::size_t count, std::size_t elementBytes) {
    const std::size_t bytes = std::min(count, remaining() / elementBytes) * elementBytes;
    if (bytes == 0) return;
    std::memcpy(to, payload_.data() + position_, bytes);
    position_ += bytes;
}

void Reader::charge(std::size_t count, std::size_t elementBytes) {
    if (count > (maxElementBytes - elementBytes_) / elementBytes)
        throw std::length_error("more elements than memory may be given to");
    elementBytes_ += count * elementBytes;
}

std::size_t Reader::admitted(std::uint32_t count, std::size_t elementBytes,
                             std::size_t encodedBytes) {
    charge(count, elementBytes);
    const std::size_t backed = remaining() / encodedBytes;
    if (count > backed) {
        const std::size_t missing = count - backed;
        if (missing > (maxDefaultedBytes - defaultedBytes_) / elementBytes)
            throw std::length_error("more elements announced than a payload may ask for");
        defaultedBytes_ += missing * elementBytes;
    }
    return count;
}

}  // namespace wire
