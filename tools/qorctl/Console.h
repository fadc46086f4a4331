#pragma once

#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

namespace qorctl {

/// Where a person reads what goes on: whole lines, and on a terminal one transient line, or a
/// block of them, below, which the next line replaces. All operations may be called from any
/// thread.
class Console {
public:
    /// `stream` is stdout or stderr; not owned.
    explicit Console(std::FILE* stream);
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    bool isTerminal() const { return isTerminal_; }

    void line(const std::string& text);

    /// Shows `text`, cut to the width of a terminal, in place of the last transient line; nothing
    /// when the stream is not a terminal.
    void transient(const std::string& text);
    /// Shows the lines in place of the last block, cut to what the window holds; nothing when the
    /// stream is not a terminal.
    void block(const std::vector<std::string>& lines);
    /// Both the line and the block.
    void eraseTransient();

private:
    /// What makes the transient line vanish, which then counts as gone.
    std::string erasure();
    void eraseBlock();
    void rewriteBlock(const std::vector<std::string>& lines);

    std::FILE* const stream_;
    const bool isTerminal_;
    std::mutex mutex_;
    std::size_t transientChars_ = 0;
    std::vector<std::string> block_;  // the cursor stands in the line below it
};

}  // namespace qorctl
