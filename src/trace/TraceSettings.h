#pragma once

#include <cstdint>
#include <string>

namespace tracelog {

/// The switches of a trace settings file, and the reading of its lines.
///
/// A line is tested for its keyword as a substring, in a fixed order, and only the first keyword
/// that occurs anywhere in it is applied. So a path or a module name that happens to contain an
/// earlier keyword ("dt", "tc", "ts" ...) throws that switch instead; operators know the order.
/// Reading the same file again never undoes a switch: columns only turn on, "notrace" and "nid"
/// only turn off, and the two module lists grow by the same text up to their cap.
struct TraceSettings {
    /// The output file that a "tf" line asks for.
    struct FileRequest {
        std::string path;
        std::string mode;
    };

    bool enabled = true;
    bool levelColumn = true;
    bool indentColumn = true;
    bool threadColumn = false;
    bool dateColumn = false;
    bool tickColumn = false;
    bool hpcColumn = false;
    std::uint32_t categoryMask = 0xFFFFFFFFu;
    std::int32_t verbosityLimit = 255;
    std::int32_t refreshSeconds = 0;
    std::string includeList;
    std::string excludeList;

    /// Applies one line. True if it names an output file, which is then in `file`.
    bool applyLine(const std::string& line, FileRequest& file);

    /// Whether a call under `moduleName` is wanted by the two lists (names compared without
    /// regard to case). A non-empty include list decides alone.
    bool passesModule(const std::string& moduleName) const;

    /// The words of the columns that are on, each followed by a blank, and a line feed.
    std::string header() const;
};

}  // namespace tracelog
