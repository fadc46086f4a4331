#pragma once

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string_view>

#include "qorcontrol/Lock.h"
#include "trace/FixedText.h"
#include "trace/Trace.h"
#include "trace/TraceSettings.h"

namespace tracelog {

/// All state of the trace. The process has one (`processContext`); tests make their own.
///
/// One recursive lock guards everything: parsing the settings holds it while it opens a trace
/// file and writes that file's first line. No other lock is ever taken under it.
///
/// Nothing here allocates, apart from what the run-time library and the system need to open a
/// file, and nothing throws: lines are written by destructors, and where a thread's last exception
/// ends, also when that one tells that there is no memory left.
class TraceContext {
public:
    TraceContext() = default;
    ~TraceContext() { close(); }
    TraceContext(const TraceContext&) = delete;
    TraceContext& operator=(const TraceContext&) = delete;

    void write(const char* moduleName, unsigned int category, int verbosity, const char* format,
               std::va_list values) noexcept;
    void loadSettings(std::string_view path) noexcept;
    void openTraceFile(std::string_view path, std::string_view mode) noexcept;

    /// Opens a scope; true if it is not the outermost one, `savedEnabled` then holds what
    /// `leaveScope` brings back.
    bool enterScope(const char* moduleName, const char* title, bool& savedEnabled) noexcept;
    void leaveScope(const char* moduleName, const char* title, bool savedEnabled) noexcept;

    /// Where the time for the settings refresh comes from; tests put their own.
    std::int64_t (*secondsNow)() = [] { return std::int64_t{_time64(nullptr)}; };

private:
    /// Longer than any path that a host can give its trace.
    static constexpr std::size_t maxPathChars = 5200;
    using Path = FixedText<maxPathChars>;

    struct CloseFile {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, CloseFile>;
    /// A file's buffer, ours so that its first line does not allocate one.
    using FileBuffer = char[4096];

    static bool locate(std::string_view path, Path& located) noexcept;
    static File openFile(std::string_view path, const char* mode, FileBuffer& buffer) noexcept;

    void writeLine(const char* moduleName, const char* format, const char* title) noexcept;
    void refreshSettings() noexcept;
    void readSettings() noexcept;
    bool isWanted(const char* moduleName, unsigned int category, int verbosity) const noexcept;
    void putColumns(unsigned int category) noexcept;
    void putDateColumn() noexcept;
    void putHpcColumn() noexcept;
    void putIndentation() noexcept;
    void putMessage(const char* format, std::va_list values) noexcept;
    void put(const char* piece) noexcept;
    void close() noexcept;

    common::Lock lock_;
    TraceSettings settings_;
    bool scopeEnabled_ = true;
    std::int32_t indent_ = 0;
    std::int32_t scopeCount_ = 0;
    FileBuffer traceBuffer_ = "";  // must outlive its file, like the other one
    File traceFile_;
    Path tracePath_;
    bool headerWritten_ = false;
    FileBuffer settingsBuffer_ = "";
    File settingsFile_;
    std::int64_t lastSettingsRead_ = 0;
    std::int64_t lastHpcStamp_ = 0;
    std::int64_t hpcFrequency_ = 0;
    char lineBuffer_[maxMessageChars + 1] = "";
};

/// The one context of the process.
TraceContext& processContext();

}  // namespace tracelog
