#pragma once

#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "protocol/Wire.h"

namespace fuzz {

/// Fills the fields of a record with random values: extreme numbers, any bytes in texts, empty and
/// short lists. The same generator state gives the same record on every platform.
class RandomFill {
public:
    explicit RandomFill(std::mt19937& random) : random_(random) {}

    template <class T>
    void operator()(const char*, T& field) {
        fill(field);
    }

private:
    /// A number below `bound`. (The distributions of the library differ between platforms.)
    std::uint32_t below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(random_()) % bound;
    }

    void fill(std::uint32_t& value) {
        static constexpr std::uint32_t extremes[] = {0,          1,          255,       256,
                                                     0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
        value = below(3) == 0 ? extremes[below(7)] : static_cast<std::uint32_t>(random_());
    }
    void fill(std::int32_t& value) {
        std::uint32_t word = 0;
        fill(word);
        value = static_cast<std::int32_t>(word);
    }
    void fill(std::uint8_t& value) { value = static_cast<std::uint8_t>(random_()); }
    void fill(bool& value) { value = below(2) == 1; }
    void fill(double& value) {
        std::uint64_t image = (static_cast<std::uint64_t>(random_()) << 32) | random_();
        // 32-bit code may quieten a signalling NaN merely by passing it on.
        const std::uint64_t exponent = 0x7FF0000000000000u;
        if ((image & exponent) == exponent) image |= 0x0008000000000000u;
        std::memcpy(&value, &image, sizeof value);
    }
    void fill(std::string& text) {
        text.resize(below(4) == 0 ? 0 : below(20));
        for (char& character : text) character = static_cast<char>(random_());
    }
    void fill(std::map<std::string, std::string>& entries) {
        entries.clear();
        for (std::uint32_t left = below(5); left > 0; --left) {
            std::string key;
            fill(key);
            fill(entries[key]);
        }
    }
    template <class T>
    void fill(std::vector<T>& items) {
        items.assign(below(3) == 0 ? 0 : below(6), T());
        for (T& item : items) fill(item);
    }
    void fill(common::Doubles& values) {
        std::vector<double> filled;
        fill(filled);
        values = filled;
    }
    template <class T>
    void fill(wire::BareRun<T>& run) {
        fill(run.items);
    }
    template <class Record>
    auto fill(Record& record) -> std::enable_if_t<std::is_class<Record>::value> {
        Record::fields(record, *this);
    }

    std::mt19937& random_;
};

template <class Record>
Record randomRecord(std::mt19937& random) {
    Record record;
    RandomFill fill(random);
    Record::fields(record, fill);
    return record;
}

}  // namespace fuzz
