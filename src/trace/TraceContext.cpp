#include "trace/TraceContext.h"

#include <windows.h>

#include "common/Clock.h"
#include "common/Paths.h"
#include "common/Thread.h"
#include "trace/Trace.h"

namespace tracelog {
namespace {

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

/// A piece of a few characters, formatted without allocating.
struct Piece {
    explicit Piece(const char* format, ...) noexcept __attribute__((format(gnu_printf, 2, 3)));

    char text[64];
};

Piece::Piece(const char* format, ...) noexcept {
    std::va_list values;
    va_start(values, format);
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
}

}  // namespace

void TraceContext::write(const char* moduleName, unsigned int category, int verbosity,
                         const char* format, std::va_list values) noexcept {
    const common::LockGuard guard(lock_);
    refreshSettings();
    if (!isWanted(moduleName, category, verbosity)) return;
    putColumns(category);
    putMessage(format, values);
}

void TraceContext::loadSettings(std::string_view path) noexcept {
    const common::LockGuard guard(lock_);
    settingsFile_.reset();
    settingsFile_ = openFile(path, "r", settingsBuffer_);
    readSettings();
}

void TraceContext::openTraceFile(std::string_view path, std::string_view mode) noexcept {
    const common::LockGuard guard(lock_);
    if (traceFile_ && path == tracePath_) return;
    traceFile_.reset();
    FixedText<TraceSettings::maxLineChars> modeText;
    modeText.append(mode);
    traceFile_ = openFile(path, modeText.c_str(), traceBuffer_);
    tracePath_.assign(path);
    headerWritten_ = false;
}

/// A path with neither drive nor directory is meant in the executable's directory. False if it is
/// too long.
bool TraceContext::locate(std::string_view path, Path& located) noexcept {
    if (path.find_first_of(":\\/") != std::string_view::npos) return located.assign(path);
    char directory[maxPathChars + 1];
    return common::getExecutableDirectory(directory, sizeof directory) &&
           located.assign(directory) && located.append(path);
}

TraceContext::File TraceContext::openFile(std::string_view path, const char* mode,
                                          FileBuffer& buffer) noexcept {
    Path located;
    if (!locate(path, located)) return nullptr;
    File file(std::fopen(located.c_str(), mode));
    if (file) std::setvbuf(file.get(), buffer, _IOFBF, sizeof buffer);
    return file;
}

bool TraceContext::enterScope(const char* moduleName, const char* title,
                              bool& savedEnabled) noexcept {
    const common::LockGuard guard(lock_);
    if (scopeCount_++ == 0) return false;
    writeLine(moduleName, "{ %s", title);
    savedEnabled = scopeEnabled_;
    indent_ += 3;
    return true;
}

void TraceContext::leaveScope(const char* moduleName, const char* title,
                              bool savedEnabled) noexcept {
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

void TraceContext::writeLine(const char* moduleName, const char* format,
                             const char* title) noexcept {
    const auto forward = [&](const char* text, ...) {
        std::va_list values;
        va_start(values, text);
        write(moduleName, information, 0, text, values);
        va_end(values);
    };
    forward(format, title);
}

void TraceContext::refreshSettings() noexcept {
    if (settings_.refreshSeconds == 0) return;
    if (secondsNow() - lastSettingsRead_ >= settings_.refreshSeconds) readSettings();
}

void TraceContext::readSettings() noexcept {
    if (!settingsFile_) return;
    char line[TraceSettings::maxLineChars + 1];
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

bool TraceContext::isWanted(const char* moduleName, unsigned int category,
                            int verbosity) const noexcept {
    return settings_.enabled && settings_.passesModule(moduleName) && scopeEnabled_ &&
           (settings_.categoryMask & category) != 0 && verbosity <= settings_.verbosityLimit;
}

void TraceContext::putColumns(unsigned int category) noexcept {
    if (settings_.levelColumn) put(levelPiece(category));
    if (settings_.threadColumn)
        put(Piece("%lX\t", static_cast<unsigned long>(common::currentThreadId())).text);
    if (settings_.dateColumn) putDateColumn();
    if (settings_.tickColumn)
        put(Piece("%08lX\t", static_cast<unsigned long>(common::tickCount())).text);
    if (settings_.hpcColumn) putHpcColumn();
    if (settings_.indentColumn) putIndentation();
}

void TraceContext::putDateColumn() noexcept {
    SYSTEMTIME now;
    GetLocalTime(&now);
    put(Piece("%2d/%02d/%02d %02d:%02d:%02d\t", now.wYear % 100, now.wMonth, now.wDay, now.wHour,
              now.wMinute, now.wSecond)
            .text);
}

void TraceContext::putHpcColumn() noexcept {
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
    put(Piece("%8ld\t", static_cast<long>(tenthsOfMs)).text);
    lastHpcStamp_ = counter.QuadPart;
}

void TraceContext::putIndentation() noexcept {
    // The message's buffer is free until the message follows.
    for (int left = indent_; left > 0; left -= static_cast<int>(sizeof lineBuffer_) - 1) {
        std::snprintf(lineBuffer_, sizeof lineBuffer_, "%*s", left, "");
        put(lineBuffer_);
    }
}

void TraceContext::putMessage(const char* format, std::va_list values) noexcept {
    const int length = std::vsnprintf(lineBuffer_, sizeof lineBuffer_, format, values);
    if (length < 0) return;
    put(lineBuffer_);
    if (static_cast<std::size_t>(length) >= sizeof lineBuffer_) put("\n\n");
}

void TraceContext::put(const char* piece) noexcept {
    if (!traceFile_) {
        OutputDebugStringA(piece);
        return;
    }
    std::fputs(piece, traceFile_.get());
    std::fflush(traceFile_.get());
}

void TraceContext::close() noexcept {
    traceFile_.reset();
    settingsFile_.reset();
    lock_.release();
}

}  // namespace tracelog
