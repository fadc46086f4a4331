#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace text {

/// One value formatted with `format`, cut at `limit` - 1 characters.
template <std::size_t limit, class... Values>
std::string piece(const char* format, Values... values) {
    char buffer[limit];
    std::snprintf(buffer, sizeof buffer, format, values...);
    return buffer;
}

/// All values as the trace shows them: each as "%g" and a blank.
inline std::string ofValues(const std::vector<double>& values) {
    std::string joined;
    for (const double value : values) joined += piece<100>("%g ", value);
    return joined;
}

}  // namespace text
