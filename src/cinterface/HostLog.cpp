#include "cinterface/HostLog.h"

#include <algorithm>
#include <cstdio>

#include "cinterface/Text.h"

namespace cinterface {
namespace {

/// Longer lines are cut; those of a request with many names or bytes can be as long as that.
constexpr int maxLineBytes = 64 * 1024;

std::string formatted(const char* format, std::va_list values) {
    std::va_list again;
    va_copy(again, values);
    const int needed = std::vsnprintf(nullptr, 0, format, values);
    std::string line(static_cast<std::size_t>(std::clamp(needed, 0, maxLineBytes)) + 1, '\0');
    std::vsnprintf(line.data(), line.size(), format, again);
    va_end(again);
    line.pop_back();
    return line;
}

}  // namespace

void HostLog::reserved1(const char*, ...) const {}

void HostLog::info(const char* format, ...) const {
    std::va_list values;
    va_start(values, format);
    tell(false, format, values);
    va_end(values);
}

void HostLog::error(const char* format, ...) const {
    std::va_list values;
    va_start(values, format);
    tell(true, format, values);
    va_end(values);
}

void HostLog::tell(bool isFailure, const char* format, std::va_list values) const {
    if (!function_.isSet()) return;
    try {
        const std::string line = text::shownUtf8Of(formatted(format, values));
        function_(isFailure ? 1 : 0, line.c_str());
    } catch (...) {
        // A log must not throw: without memory there is no line.
    }
}

}  // namespace cinterface
