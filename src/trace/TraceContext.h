#pragma once

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>

#include "common/Lock.h"
#include "trace/Trace.h"
#include "trace/TraceSettings.h"

namespace tracelog {

/// All state of the trace. The process has one (`processContext`); tests make their own.
///
/// One recursive lock guards everything: parsing the settings holds it while it opens a trace
/// file and writes that file's first line. No other lock is ever taken under it.
class TraceContext {
public:
    TraceContext() = default;
    ~TraceContext() { close(); }
    TraceContext(const TraceContext&) = delete;
    TraceContext& operator=(const TraceContext&) = delete;

    void write(const char* moduleName, unsigned int category, int verbosity, const char* format,
               std::va_list values);
    void loadSettings(const std::string& path);
    void openTraceFile(const std::string& path, const std::string& mode);

    /// Opens a scope; true if it is not the outermost one, `savedEnabled` then holds what
    /// `leaveScope` brings back.
    bool enterScope(const char* moduleName, const char* title, bool& savedEnabled);
    void leaveScope(const char* moduleName, const char* title, bool savedEnabled);

    /// Where the time for the settings refresh comes from; tests put their own.
    std::int64_t (*secondsNow)() = [] { return std::int64_t{_time64(nullptr)}; };

private:
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, CloseFile>;

    void writeLine(const char* moduleName, const char* format, const char* title);
    void refreshSettings();
    void readSettings();
    bool isWanted(const char* moduleName, unsigned int category, int verbosity) const;
    void putColumns(unsigned int category);
    void putHpcColumn();
    void putMessage(const char* format, std::va_list values);
    void put(const char* piece);
    void close();

    common::Lock lock_;
    TraceSettings settings_;
    bool scopeEnabled_ = true;
    std::int32_t indent_ = 0;
    std::int32_t scopeCount_ = 0;
    File traceFile_;
    std::string tracePath_;
    bool headerWritten_ = false;
    File settingsFile_;
    std::int64_t lastSettingsRead_ = 0;
    std::int64_t lastHpcStamp_ = 0;
    std::int64_t hpcFrequency_ = 0;
    char lineBuffer_[maxMessageChars + 1] = "";
};

/// The one context of the process.
TraceContext& processContext();

}  // namespace tracelog
