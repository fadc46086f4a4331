#include "ConsoleLog.h"

#include <cstdarg>
#include <cstdio>

namespace qorctl {
namespace {

std::string formatted(const char* format, std::va_list values) {
    char line[2048];
    return std::vsnprintf(line, sizeof line, format, values) < 0 ? format : line;
}

}  // namespace

void ConsoleLog::reserved1(const char*, ...) const {}

void ConsoleLog::info(const char* format, ...) const {
    std::va_list values;
    va_start(values, format);
    add(formatted(format, values));
    va_end(values);
}

void ConsoleLog::error(const char* format, ...) const {
    std::va_list values;
    va_start(values, format);
    add(formatted(format, values));
    va_end(values);
}

std::vector<std::string> ConsoleLog::lines() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return lines_;
}

void ConsoleLog::add(const std::string& line) const {
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        lines_.push_back(line);
    }
    console_.line("log     " + line);
}

}  // namespace qorctl
