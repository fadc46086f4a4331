#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace tracelog {

/// A text of at most `capacity` characters that never allocates: the trace has to work, and must
/// not throw, in a process that has no memory left.
template <std::size_t capacity>
class FixedText {
public:
    FixedText() noexcept = default;

    /// Adds what still fits; false if that was not all of `text`. It must not be a piece of this.
    bool append(std::string_view text) noexcept {
        const std::size_t fitting = std::min(text.size(), capacity - size_);
        std::copy_n(text.data(), fitting, chars_ + size_);
        size_ += fitting;
        chars_[size_] = '\0';
        return fitting == text.size();
    }

    bool assign(std::string_view text) noexcept {
        size_ = 0;
        return append(text);
    }

    bool empty() const noexcept { return size_ == 0; }
    const char* c_str() const noexcept { return chars_; }
    operator std::string_view() const noexcept { return {chars_, size_}; }

private:
    std::size_t size_ = 0;
    char chars_[capacity + 1] = {};
};

}  // namespace tracelog
