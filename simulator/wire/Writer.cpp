#include "wire/Writer.h"

#include <cstring>

namespace simulator {

namespace {

template <class Word>
void appendTo(std::string& bytes, Word value) {
    char image[sizeof value];
    for (char& byte : image) {
        byte = static_cast<char>(value & 0xFFU);
        value >>= 8U;
    }
    bytes.append(image, sizeof image);
}

}  // namespace

Writer& Writer::u32(std::uint32_t value) {
    appendTo(bytes_, value);
    return *this;
}

Writer& Writer::i32(std::int32_t value) {
    return u32(static_cast<std::uint32_t>(value));
}

Writer& Writer::boolean(bool value) {
    return u32(value ? 1U : 0U);
}

Writer& Writer::f64(double value) {
    std::uint64_t image = 0;
    static_assert(sizeof image == sizeof value, "a double must be 8 bytes");
    std::memcpy(&image, &value, sizeof image);
    appendTo(bytes_, image);
    return *this;
}

Writer& Writer::text(const std::string& value) {
    count(value.size());
    bytes_ += value;
    return *this;
}

Writer& Writer::doubles(const std::vector<double>& values) {
    count(values.size());
    bytes_.reserve(bytes_.size() + 8 * values.size());
    for (const double value : values) f64(value);
    return *this;
}

Writer& Writer::words(const std::vector<std::uint32_t>& values) {
    count(values.size());
    for (const std::uint32_t value : values) u32(value);
    return *this;
}

Writer& Writer::texts(const std::vector<std::string>& values) {
    count(values.size());
    for (const std::string& value : values) text(value);
    return *this;
}

Writer& Writer::count(std::size_t elements) {
    return u32(static_cast<std::uint32_t>(elements));
}

}  // namespace simulator
