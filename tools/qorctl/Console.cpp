#include "Console.h"

#include <windows.h>

namespace qorctl {
namespace {

// One less than the usual width: a full last column would scroll.
constexpr std::size_t maxTransientChars = 79;

bool writesToConsole(std::FILE* stream) {
    DWORD mode = 0;
    const DWORD which = stream == stderr ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE;
    return GetConsoleMode(GetStdHandle(which), &mode) != 0;
}

/// In one piece: on a console the stream has no buffer, and formatted output would go out
/// character by character.
void put(std::FILE* stream, const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

}  // namespace

Console::Console(std::FILE* stream) : stream_(stream), isTerminal_(writesToConsole(stream)) {}

void Console::line(const std::string& text) {
    const std::lock_guard<std::mutex> guard(mutex_);
    put(stream_, erasure() + text + "\n");
}

void Console::transient(const std::string& text) {
    if (!isTerminal_) return;
    const std::lock_guard<std::mutex> guard(mutex_);
    const std::string shown = text.substr(0, maxTransientChars);
    const std::size_t rest = transientChars_ > shown.size() ? transientChars_ - shown.size() : 0;
    put(stream_, "\r" + shown + std::string(rest, ' '));
    transientChars_ = shown.size();
}

void Console::eraseTransient() {
    const std::lock_guard<std::mutex> guard(mutex_);
    put(stream_, erasure());
}

std::string Console::erasure() {
    if (transientChars_ == 0) return {};
    const std::string blanks(transientChars_, ' ');
    transientChars_ = 0;
    return "\r" + blanks + "\r";
}

}  // namespace qorctl
