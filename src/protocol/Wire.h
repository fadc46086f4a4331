#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "common/Doubles.h"

/// The value encodings of a command's payload. All integers are little-endian; values follow one
/// another without tags, names or padding. This is the one place that touches raw bytes.
///
/// A record that travels declares its fields once, in wire order:
///
///     template <class Self, class Visitor>
///     static void fields(Self& self, Visitor&& visit) {
///         visit("status", self.status);
///     }
///
/// and the writer, the counter and the reader (and comparisons and dumps in tests) are visitors of
/// it.
namespace wire {

/// Whether values of the type lie in memory as they travel, so that whole arrays are copied. Only
/// as bytes: a number that is loaded and stored may come out another one (a signalling NaN does).
template <class T>
constexpr bool travelsAsItLies = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ &&
                                 (std::is_same<T, double>::value ||
                                  std::is_same<T, std::uint32_t>::value ||
                                  std::is_same<T, std::int32_t>::value);

/// A sequence without a count in front: as many whole elements as the payload holds.
template <class T>
struct BareRun {
    std::vector<T> items;
};

/// Appends values to a byte string that it does not own.
class Writer {
public:
    explicit Writer(std::string& out) : out_(out) {}

    void put(std::uint32_t value) {
        const char bytes[4] = {static_cast<char>(value), static_cast<char>(value >> 8),
                               static_cast<char>(value >> 16), static_cast<char>(value >> 24)};
        out_.append(bytes, sizeof bytes);
    }
    void put(std::int32_t value) { put(static_cast<std::uint32_t>(value)); }
    void put(std::uint8_t value) { put(static_cast<std::uint32_t>(value)); }
    void put(bool value) { put(static_cast<std::uint32_t>(value ? 1 : 0)); }
    void put(double value);
    void put(const std::string& text);
    void put(const std::map<std::string, std::string>& entries);

    template <class T>
    void put(const std::vector<T>& items) {
        put(static_cast<std::uint32_t>(items.size()));
        putEach(items);
    }

    void put(const common::Doubles& values) { put(values.all()); }

    template <class T>
    void put(const BareRun<T>& run) {
        putEach(run.items);
    }

    /// A record, alone or inside a sequence: its fields, nothing around them.
    template <class Record>
    auto put(const Record& record) -> std::enable_if_t<std::is_class<Record>::value> {
        Record::fields(record, [this](const char*, const auto& field) { this->put(field); });
    }

private:
    template <class T>
    void putEach(const std::vector<T>& items) {
        if constexpr (travelsAsItLies<T>)
            out_.append(reinterpret_cast<const char*>(items.data()), items.size() * sizeof(T));
        else
            for (const T& item : items) put(item);
    }

    std::string& out_;
};

/// Counts the bytes that a Writer would append for the same values, without building any.
class Counter {
public:
    std::size_t bytes() const { return bytes_; }

    void put(std::uint32_t) { bytes_ += 4; }
    void put(std::int32_t) { bytes_ += 4; }
    void put(std::uint8_t) { bytes_ += 4; }
    void put(bool) { bytes_ += 4; }
    void put(double) { bytes_ += 8; }
    void put(const std::string& text) { bytes_ += 4 + text.size(); }
    void put(const std::map<std::string, std::string>& entries);

    template <class T>
    void put(const std::vector<T>& items) {
        bytes_ += 4;
        putEach(items);
    }

    void put(const common::Doubles& values) { put(values.all()); }

    template <class T>
    void put(const BareRun<T>& run) {
        putEach(run.items);
    }

    template <class Record>
    auto put(const Record& record) -> std::enable_if_t<std::is_class<Record>::value> {
        Record::fields(record, [this](const char*, const auto& field) { this->put(field); });
    }

private:
    template <class T>
    void putEach(const std::vector<T>& items) {
        if constexpr (travelsAsItLies<T>)
            bytes_ += items.size() * sizeof(T);
        else
            for (const T& item : items) put(item);
    }

    std::size_t bytes_ = 0;  // cannot overflow: in memory every value takes as many, or nearly so
};

/// How many bytes `value` takes in a payload.
template <class T>
std::size_t encodedBytes(const T& value) {
    Counter counter;
    counter.put(value);
    return counter.bytes();
}

/// How many bytes a value of this kind takes at least: those of a default one, whose texts and
/// sequences are empty.
template <class T>
std::size_t smallestEncoding() {
    static const std::size_t bytes = encodedBytes(T());
    return bytes;
}

/// Reads values from a payload that must outlive it. No input can fail: a number or text that is
/// not there whole is left as it is and the position stays, so that missing fields keep their
/// defaults. A sequence takes the count that it announces; elements that are not there get default
/// values, as do the entries of a map, which all fall on the empty key.
///
/// The one thing that a payload can do wrong is to announce so many elements that they would take
/// unreasonable memory: then std::length_error is thrown.
class Reader {
public:
    /// Bytes of default elements, beyond what the payload itself backs, that one payload may ask
    /// for.
    static constexpr std::size_t maxDefaultedBytes = 16u << 20;

    /// Bytes of memory that the elements of all sequences and maps of a payload may take, whether
    /// the payload backs them or not: an empty text is four bytes of payload and six times that in
    /// memory.
    static constexpr std::size_t maxElementBytes = 256u << 20;

    explicit Reader(std::string_view payload) : payload_(payload) {}

    void get(std::uint32_t& value) {
        if (remaining() < 4) return;
        value = byteAt(0) | byteAt(1) << 8 | byteAt(2) << 16 | byteAt(3) << 24;
        position_ += 4;
    }
    void get(std::int32_t& value);
    /// Takes the low byte of a word.
    void get(std::uint8_t& value);
    /// Only the word 1 is true.
    void get(bool& value);
    void get(double& value);
    void get(std::string& text);
    void get(std::map<std::string, std::string>& entries);
    void get(common::Doubles& values);

    template <class T>
    void get(std::vector<T>& items) {
        std::uint32_t count = 0;
        get(count);
        items.assign(admitted(count, sizeof(T), smallestEncoding<T>()), T());
        getEach(items);
    }

    template <class T>
    void get(BareRun<T>& run) {
        run.items.resize(remaining() / sizeof(T));
        getEach(run.items);
    }

    template <class Record>
    auto get(Record& record) -> std::enable_if_t<std::is_class<Record>::value> {
        Record::fields(record, [this](const char*, auto& field) { this->get(field); });
    }

private:
    template <class T>
    void getEach(std::vector<T>& items) {
        if constexpr (travelsAsItLies<T>) {
            copyImages(items.data(), items.size(), sizeof(T));
        } else {
            for (T& item : items) {
                const std::size_t before = position_;
                get(item);
                // What could not be read here cannot be read by any later element of the kind.
                if (position_ == before) return;
            }
        }
    }

    std::size_t remaining() const { return payload_.size() - position_; }
    std::uint32_t byteAt(std::size_t ahead) const {
        return static_cast<unsigned char>(payload_[position_ + ahead]);
    }
    /// As many whole ones as there are.
    void copyImages(void* to, std::size_t count, std::size_t elementBytes);
    void charge(std::size_t count, std::size_t elementBytes);
    std::size_t admitted(std::uint32_t count, std::size_t elementBytes, std::size_t encodedBytes);

    const std::string_view payload_;
    std::size_t position_ = 0;
    std::size_t defaultedBytes_ = 0;
    std::size_t elementBytes_ = 0;
};

}  // namespace wire
