#pragma once

#include <cstdarg>
#include <cstdio>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "qorcontrol/HostInterfaces.h"

/// A host's log that formats each line as a real one would and keeps it with the operation's name
/// in front: "info: ..." or "error: ...".
class RecordingEolLog final : public EolLog {
public:
    void reserved1(const char* format, ...) const override {
        std::va_list values;
        va_start(values, format);
        keep("reserved: ", format, values);
        va_end(values);
    }
    void info(const char* format, ...) const override {
        std::va_list values;
        va_start(values, format);
        keep("info: ", format, values);
        va_end(values);
    }
    void error(const char* format, ...) const override {
        std::va_list values;
        va_start(values, format);
        keep("error: ", format, values);
        va_end(values);
    }

    std::vector<std::string> lines() const {
        const std::lock_guard<std::mutex> guard(mutex_);
        return lines_;
    }

    /// Called at each line, on the thread that writes it.
    std::function<void()> onLine;

private:
    void keep(const char* kind, const char* format, std::va_list values) const {
        std::vector<char> text(100000);
        std::vsnprintf(text.data(), text.size(), format, values);
        if (onLine) onLine();
        const std::lock_guard<std::mutex> guard(mutex_);
        lines_.push_back(std::string(kind) + text.data());
    }

    mutable std::mutex mutex_;
    mutable std::vector<std::string> lines_;
};
