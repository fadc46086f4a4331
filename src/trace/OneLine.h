#pragma once

#include <cstddef>
#include <string>

#include "trace/Trace.h"

namespace tracelog {

/// A text of somebody else's (a name, a path, what QOR says) as it goes into a line of the trace:
/// each control character is a blank, so that no text ends its line and forges the next. It ends
/// with what a line can hold, and where C does. Needs no memory.
class OneLine {
public:
    explicit OneLine(const std::string& text) noexcept {
        const char* const from = text.c_str();
        std::size_t length = 0;
        for (; length < maxMessageChars && from[length] != '\0'; ++length)
            text_[length] = isControl(from[length]) ? ' ' : from[length];
        text_[length] = '\0';
    }

    const char* c_str() const noexcept { return text_; }

private:
    static bool isControl(char c) noexcept {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    }

    char text_[maxMessageChars + 1];
};

inline OneLine oneLine(const std::string& text) noexcept {
    return OneLine(text);
}

}  // namespace tracelog
