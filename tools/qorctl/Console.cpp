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

/// Where the first line of a block stands whose last one is above the cursor.
COORD beginOf(const std::vector<std::string>& block, std::FILE* stream) {
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    GetConsoleScreenBufferInfo(consoleOf(stream), &info);
    const int row = info.dwCursorPosition.Y - static_cast<int>(block.size());
    return {0, static_cast<SHORT>(std::max(row, 0))};
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
    if (!block_.empty() && shown.size() == block_.size()) {
        rewriteBlock(shown);
        return;
    }
    eraseBlock();
    std::string text = erasure();
    for (const std::string& line : shown) text += line + "\n";
    put(stream_, text);
    block_ = shown;
}

void Console::eraseTransient() {
    const std::lock_guard<std::mutex> guard(mutex_);
    eraseBlock();
    put(stream_, erasure());
}

void Console::eraseBlock() {
    if (block_.empty()) return;
    rewriteBlock(std::vector<std::string>(block_.size()));
    SetConsoleCursorPosition(consoleOf(stream_), beginOf(block_, stream_));
    block_.clear();
}

/// Only what has changed, and through the system, not by escape sequences: not every console takes
/// those, and some are slow.
void Console::rewriteBlock(const std::vector<std::string>& lines) {
    COORD place = beginOf(block_, stream_);
    for (std::size_t i = 0; i < lines.size(); ++i, ++place.Y) {
        if (lines[i] == block_[i]) continue;
        std::string text = lines[i];
        text.resize(std::max(text.size(), block_[i].size()), ' ');
        DWORD written = 0;
        WriteConsoleOutputCharacterA(consoleOf(stream_), text.data(),
                                     static_cast<DWORD>(text.size()), place, &written);
        block_[i] = lines[i];
    }
}

std::string Console::erasure() {
    if (transientChars_ == 0) return {};
    const std::string blanks(transientChars_, ' ');
    transientChars_ = 0;
    return "\r" + blanks + "\r";
}

}  // namespace qorctl
