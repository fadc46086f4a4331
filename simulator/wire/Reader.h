#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/// Reads wire values from a payload. A value that does not fit into the rest of the payload yields
/// the given default, consumes nothing and marks the reader as short; reading goes on, because a
/// payload cut at a field boundary is legal and means "defaults for the rest".
///
/// A sequence ends at the first element that is not there: an absurd element count therefore costs
/// no memory. The caller sees it by isShort().
class Reader {
public:
    explicit Reader(std::string_view payload) : payload_(payload) {}

    std::uint32_t u32(std::uint32_t missing = 0);
    std::int32_t i32(std::int32_t missing = 0);
    /// Only the word 1 is true.
    bool boolean(bool missing = false);
    double f64(double missing = 0.0);
    std::string text();
    std::vector<double> doubles();
    std::vector<std::uint32_t> words();
    std::vector<std::string> texts();
    /// Words up to the end of the payload, without a count in front.
    std::vector<std::uint32_t> wordsToEnd();

    /// Calls readElement once per announced element, as long as bytes are left.
    template <class Element, class ReadElement>
    std::vector<Element> sequence(ReadElement readElement) {
        std::vector<Element> elements;
        const std::uint32_t announced = u32();
        elements.reserve(std::min<std::size_t>(announced, remaining() / sizeof(Element)));
        for (std::uint32_t i = 0; i < announced; ++i) {
            const std::size_t before = position_;
            Element element = readElement(*this);
            if (position_ == before) break;
            elements.push_back(std::move(element));
        }
        return elements;
    }

    bool isShort() const { return isShort_; }
    bool atEnd() const { return position_ == payload_.size(); }
    std::size_t remaining() const { return payload_.size() - position_; }

private:
    bool take(std::size_t size, std::string_view& bytes);

    std::string_view payload_;
    std::size_t position_ = 0;
    bool isShort_ = false;
};

/// The little-endian word in the first four bytes; the caller has checked that they are there.
std::uint32_t wordAt(std::string_view bytes, std::size_t offset);

}  // namespace simulator
