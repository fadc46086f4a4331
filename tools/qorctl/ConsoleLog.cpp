#include "ConsoleLog.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace qorctl {
namespace {

/// A server runs for months.
constexpr std::size_t mostLines = 10000;

std::string formatted(const char* format, std::va_list values) {
    char line[2048];
    return std::vsnprintf(line, sizeof line, format, values) < 0 ? format : line;
}

}  // namespace

void ConsoleLog::reserved1(const char*, ...) const {}

void ConsoleLog::info(const char* format, ...) const {
    std::va_list values;
    va_start(values, format);
    add("info", formatted(format, values));
    va_end(values);
}

void ConsoleLog::error(const char* format, ...) const {
    std::va_list values;
    va_start(values, format);
    add("error", formatted(format, values));
    va_end(values);
}

std::vector<std::string> ConsoleLog::lines() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return {lines_.begin(), lines_.end()};
}

void ConsoleLog::listen(Listener listener) const {
    const std::lock_guard<std::mutex> guard(listening_);
    listener_ = std::move(listener);
}

void ConsoleLog::add(const char* level, const std::string& line) const {
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        lines_.push_back(line);
        if (lines_.size() > mostLines) lines_.pop_front();
    }
    console_.line("log     " + line);
    const std::lock_guard<std::mutex> guard(listening_);
    if (listener_) listener_(level, line);
}

}  // namespace qorctl
