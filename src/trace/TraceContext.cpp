#include "trace/TraceContext.h"

#include <windows.h>

#include "common/Clock.h"
#include "common/Paths.h"
#include "common/Thread.h"
#include "trace/Trace.h"

namespace tracelog {
namespace {

/// A path with neither drive nor directory is meant in the executable's directory.
std::string locate(const std::string& path) {
    return path.find_first_of(":\\/") == std::string::npos ? common::executableDirectory() + path
                                                           : path;
}

const char* levelPiece(unsigned int category) {
    switch (category) {
        case error:
            return "3\t";
        case warning:
            return "2\t";
        case information:
            return "1\t";
        default:
            return "0\t";
    }
}

std::string datePiece() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    char piece[64];
    std::snprintf(piece, sizeof piece, "%2d/%02d/%02d %02d:%02d:%02d\t", now.wYear % 100,
                  now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond);
    return piece;
}

std::string hexPiece(const char* format, unsigned long value) {
    char piece[32];
    std::snprintf(piece, sizeof piece, format, value);
    return piece;
}

}  // namespace

void TraceContext::write(const char* moduleName, unsigned int category, int verbosity,
                         const char* format, std::va_list values) {
    const common::LockGuard guard(lock_);
    refreshSettings();
    if (!isWanted(moduleName, category, verbosity)) return;
    putColumns(category);
    putMessage(format, values);
}

void TraceContext::loadSettings(const std::string& path) {
    const common::LockGuard guard(lock_);
    settingsFile_.reset();
    settingsFile_.reset(std::fopen(locate(path).c_str(), "r"));
    readSettings();
}

void TraceContext::openTraceFile(const std::string& path, const std::string& mode) {
    const common::LockGuard guard(lock_);
    if (traceFile_ && path == tracePath_) return;
    traceFile_.reset();
    traceFile_.reset(std::fopen(locate(path).c_str(), mode.c_str()));
    tracePath_ = path;
    headerWritten_ = false;
}

bool TraceContext::enterScope(const char* moduleName, const char* title, bool& savedEnabled) {
    const common::LockGuard guard(lock_);
    if (scopeCount_++ == 0) return false;
    writeLine(moduleName, "{ %s", title);
    savedEnabled = scopeEnabled_;
    indent_ += 3;
    return true;
}

void TraceContext::leaveScope(const char* moduleName, const char* title, bool savedEnabled) {
    bool isOutermost = false;
    {
        const common::LockGuard guard(lock_);
        scopeEnabled_ = savedEnabled;
        if (title != nullptr) {
            indent_ -= 3;
            writeLine(moduleName, "} %s", title);
        }
        isOutermost = --scopeCount_ == 0;
    }
    if (isOutermost) close();
}

void TraceContext::writeLine(const char* moduleName, const char* format, const char* title) {
    const auto forward = [&](const char* text, ...) {
        std::va_list values;
        va_start(values, text);
        write(moduleName, information, 0, text, values);
        va_end(values);
    };
    forward(format, title);
}

void TraceContext::refreshSettings() {
    if (settings_.refreshSeconds == 0) return;
    if (secondsNow() - lastSettingsRead_ >= settings_.refreshSeconds) readSettings();
}

void TraceContext::readSettings() {
    if (!settingsFile_) return;
    char line[2048];
    TraceSettings::FileRequest file;
    while (std::fgets(line, sizeof line, settingsFile_.get()) != nullptr)
        if (settings_.applyLine(line, file)) openTraceFile(file.path, file.mode);
    if (traceFile_ && !headerWritten_) {
        put(settings_.header().c_str());
        headerWritten_ = true;
    }
    lastSettingsRead_ = secondsNow();
    std::rewind(settingsFile_.get());
}

bool TraceContext::isWanted(const char* moduleName, unsigned int category, int verbosity) const {
    return settings_.enabled && settings_.passesModule(moduleName) && scopeEnabled_ &&
           (settings_.categoryMask & category) != 0 && verbosity <= settings_.verbosityLimit;
}

void TraceContext::putColumns(unsigned int category) {
    if (settings_.levelColumn) put(levelPiece(category));
    if (settings_.threadColumn) put(hexPiece("%lX\t", common::currentThreadId()).c_str());
    if (settings_.dateColumn) put(datePiece().c_str());
    if (settings_.tickColumn) put(hexPiece("%08lX\t", common::tickCount()).c_str());
    if (settings_.hpcColumn) putHpcColumn();
    if (settings_.indentColumn && indent_ > 0)
        put(std::string(static_cast<std::size_t>(indent_), ' ').c_str());
}

void TraceContext::putHpcColumn() {
    LARGE_INTEGER counter;
    if (!QueryPerformanceCounter(&counter)) return;
    if (hpcFrequency_ == 0) {
        LARGE_INTEGER frequency;
        QueryPerformanceFrequency(&frequency);
        hpcFrequency_ = frequency.QuadPart;
    }
    std::int64_t tenthsOfMs = 0;
    if (lastHpcStamp_ != 0 && hpcFrequency_ != 0)
        tenthsOfMs = (counter.QuadPart - lastHpcStamp_) * 10000 / hpcFrequency_;
    char piece[32];
    std::snprintf(piece, sizeof piece, "%8ld\t", static_cast<long>(tenthsOfMs));
    put(piece);
    lastHpcStamp_ = counter.QuadPart;
}

void TraceContext::putMessage(const char* format, std::va_list values) {
    const int length = std::vsnprintf(lineBuffer_, sizeof lineBuffer_, format, values);
    if (length < 0) return;
    put(lineBuffer_);
    if (static_cast<std::size_t>(length) >= sizeof lineBuffer_) put("\n\n");
}

void TraceContext::put(const char* piece) {
    if (!traceFile_) {
        OutputDebugStringA(piece);
        return;
    }
    std::fputs(piece, traceFile_.get());
    std::fflush(traceFile_.get());
}

void TraceContext::close() {
    traceFile_.reset();
    settingsFile_.reset();
    lock_.release();
}

}  // namespace tracelog
