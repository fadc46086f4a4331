#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simulator {

/// Appends wire values to a byte string: little-endian, back to back, no padding.
class Writer {
public:
    Writer& u32(std::uint32_t value);
    Writer& i32(std::int32_t value);
    Writer& boolean(bool value);
    Writer& f64(double value);
    Writer& text(const std::string& value);
    Writer& doubles(const std::vector<double>& values);
    Writer& words(const std::vector<std::uint32_t>& values);
    Writer& texts(const std::vector<std::string>& values);
    /// Element count of a sequence whose elements the caller writes itself.
    Writer& count(std::size_t elements);

    std::string take() { return std::move(bytes_); }

private:
    std::string bytes_;
};

}  // namespace simulator
