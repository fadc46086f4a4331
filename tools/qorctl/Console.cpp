#include "Console.h"

#include <windows.h>

#include <algorithm>

namespace qorctl {
namespace {

// One less than the usual width: a full last column would scroll.
constexpr std::size_t maxTransientChars = 79;

HANDLE consoleOf(std::FILE* stream) {
    return GetStdHandle(stream == stderr ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
}

bool writesToConsole(std::FILE* stream) {
    DWORD mode = 0;
    return GetConsoleMode(consoleOf(stream), &mode) != 0;
}

/// The window's lines, cut so that neither a full last column nor a full last line scrolls.
std::vector<std::string> fitted(std::vector<std::string> lines, std::FILE* stream) {
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (!GetConsoleScreenBufferInfo(consoleOf(stream), &info)) return {};
    const auto columns = static_cast<std::size_t>(std::max<int>(info.dwSize.X - 1, 1));
    const auto rows =
        static_cast<std::size_t>(std::max(info.srWindow.Bottom - info.srWindow.Top, 1));
    if (lines.size() > rows) {
        const std::size_t left = lines.size() - rows + 1;
        lines.resize(rows - 1);
        lines.push_back("... " + std::to_string(left) + " more lines");
    }
    for (std::string& line : lines) line.resize(std::min(line.size(), columns));
    return lines;
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
    eraseBlock();
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

void Console::block(const std::vector<std::string>& lines) {
    if (!isTerminal_) return;
    const std::lock_guard<std::mutex> guard(mutex_);
    const std::vector<std::string> shown = fitted(lines, stream_);
    if (shown.size() < blockChars_.size()) eraseBlock();
    toBeginOfBlock();
    std::string text = erasure();
    blockChars_.resize(shown.size(), 0);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const std::size_t before = blockChars_[i];
        blockChars_[i] = shown[i].size();
        text +=
            shown[i] + std::string(before > shown[i].size() ? before - shown[i].size() : 0, ' ');
        text += "\n";
    }
    put(stream_, text);
}

void Console::eraseTransient() {
    const std::lock_guard<std::mutex> guard(mutex_);
    eraseBlock();
    put(stream_, erasure());
}

void Console::eraseBlock() {
    if (blockChars_.empty()) return;
    toBeginOfBlock();
    std::string blanks;
    for (const std::size_t chars : blockChars_) blanks += std::string(chars, ' ') + "\n";
    put(stream_, blanks);
    toBeginOfBlock();
    blockChars_.clear();
}

/// The cursor stands in the line below the block. Moved through the system, not by escape
/// sequences: not every console takes those.
void Console::toBeginOfBlock() const {
    if (blockChars_.empty()) return;
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    HANDLE const console = consoleOf(stream_);
    if (!GetConsoleScreenBufferInfo(console, &info)) return;
    const int row = info.dwCursorPosition.Y - static_cast<int>(blockChars_.size());
    SetConsoleCursorPosition(console, {0, static_cast<SHORT>(std::max(row, 0))});
}

std::string Console::erasure() {
    if (transientChars_ == 0) return {};
    const std::string blanks(transientChars_, ' ');
    transientChars_ = 0;
    return "\r" + blanks + "\r";
}

}  // namespace qorctl
