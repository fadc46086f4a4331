#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "trace/Trace.h"

namespace text {

/// True once no more of `text` would be seen in a line of the trace: it is cut with what it holds.
inline bool fillsLine(const std::string& text) {
    return text.size() > tracelog::maxMessageChars;
}

/// One value formatted with `format`, cut at `limit` - 1 characters.
template <std::size_t limit, class... Values>
std::string piece(const char* format, Values... values) {
    char buffer[limit];
    std::snprintf(buffer, sizeof buffer, format, values...);
    return buffer;
}

/// The values as the trace shows them: each as "%g" and a blank, as many as fit into a line.
inline std::string ofValues(const std::vector<double>& values) {
    std::string joined;
    for (const double value : values) {
        if (fillsLine(joined)) break;
        joined += piece<100>("%g ", value);
    }
    return joined;
}

}  // namespace text
