#include "wire/Reader.h"

#include <cstring>

namespace simulator {

std::uint32_t wordAt(std::string_view bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[offset + i]))
                 << 8U * i;
    }
    return value;
}

bool Reader::take(std::size_t size, std::string_view& bytes) {
    if (size > remaining()) {
        isShort_ = true;
        return false;
    }
    bytes = payload_.substr(position_, size);
    position_ += size;
    return true;
}

std::uint32_t Reader::u32(std::uint32_t missing) {
    std::string_view bytes;
    return take(4, bytes) ? wordAt(bytes, 0) : missing;
}

std::int32_t Reader::i32(std::int32_t missing) {
    return static_cast<std::int32_t>(u32(static_cast<std::uint32_t>(missing)));
}

bool Reader::boolean(bool missing) {
    return u32(missing ? 1U : 0U) == 1U;
}

double Reader::f64(double missing) {
    std::string_view bytes;
    if (!take(8, bytes)) return missing;
    const std::uint64_t image = wordAt(bytes, 0) | static_cast<std::uint64_t>(wordAt(bytes, 4))
                                                       << 32U;
    double value = 0.0;
    std::memcpy(&value, &image, sizeof value);
    return value;
}

std::string Reader::text() {
    if (remaining() < 4) {
        isShort_ = true;
        return {};
    }
    const std::size_t size = wordAt(payload_, position_);
    if (size > remaining() - 4) {
        isShort_ = true;  // the length word stays unread too
        return {};
    }
    position_ += 4 + size;
    return std::string(payload_.substr(position_ - size, size));
}

std::vector<double> Reader::doubles() {
    return sequence<double>([](Reader& in) { return in.f64(); });
}

std::vector<std::uint32_t> Reader::words() {
    return sequence<std::uint32_t>([](Reader& in) { return in.u32(); });
}

std::vector<std::string> Reader::texts() {
    return sequence<std::string>([](Reader& in) { return in.text(); });
}

std::vector<std::uint32_t> Reader::wordsToEnd() {
    std::vector<std::uint32_t> values;
    while (remaining() >= 4) values.push_back(u32());
    if (remaining() != 0) isShort_ = true;
    return values;
}

}  // namespace simulator
