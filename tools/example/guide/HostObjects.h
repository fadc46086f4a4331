#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>

#include "QorControlFacade.h"

/// What a host gives the library besides records: its log and its progress window.
namespace guide {

// [EolLog]
// Any thread that calls the facade comes here, so a whole line is written in one call.
class FileLog final : public EolLog {
public:
    explicit FileLog(std::FILE* file) : file_(file) {}
    void reserved1(const char*, ...) const override {}
    void info(const char* format, ...) const override {
        std::va_list values;
        va_start(values, format);
        write("", format, values);
        va_end(values);
    }
    void error(const char* format, ...) const override {
        std::va_list values;
        va_start(values, format);
        write("! ", format, values);
        va_end(values);
    }

private:
    void write(const char* mark, const char* format, std::va_list values) const {
        char line[2048];
        std::vsnprintf(line, sizeof line, format, values);
        std::fprintf(file_, "%s%s\n", mark, line);
    }

    std::FILE* const file_;
};
// [/EolLog]

// [IProgressMonitor]
// The library calls this on a thread of its own while a connect runs.
class ConnectWindow final : public IProgressMonitor {
public:
    void cancel() { cancelled_ = true; }  // what the window's button does
    std::string reason() const {
        const std::lock_guard<std::mutex> guard(mutex_);
        return reason_;
    }

    bool isCancelled() override { return cancelled_; }
    void reportError(const std::string& message, unsigned int) override {
        const std::lock_guard<std::mutex> guard(mutex_);
        reason_ = message;
    }
    void reserved1() override {}  // never called; neither are the others
    void reserved2() override {}
    void reserved3() override {}
    void reserved4() override {}
    void reserved5() override {}
    void reserved6() override {}
    void reserved8() override {}
    void reserved9() override {}

private:
    std::atomic<bool> cancelled_{false};
    mutable std::mutex mutex_;
    std::string reason_;
};
// [/IProgressMonitor]

}  // namespace guide
