#pragma once

#include <cstdint>
#include <string_view>

#include "trace/FixedText.h"

namespace tracelog {

/// The switches of a trace settings file, and the reading of its lines.
///
/// A line is tested for its keyword as a substring, in a fixed order, and only the first keyword
/// that occurs anywhere in it is applied. So a path or a module name that happens to contain an
/// earlier keyword ("dt", "tc", "ts" ...) throws that switch instead; operators know the order.
/// Reading the same file again never undoes a switch: columns only turn on, "notrace" and "nid"
/// only turn off, and the two module lists grow by the same text up to their cap.
///
/// Nothing here allocates or throws: a settings file is read again on the way of a line.
struct TraceSettings {
    /// A line is read in pieces of at most this length, its line end included.
    static constexpr std::size_t maxLineChars = 2047;
    static constexpr std::size_t maxListChars = 249;

    using ModuleList = FixedText<maxListChars>;
    using Header = FixedText<31>;

    /// The output file that a "tf" line asks for.
    struct FileRequest {
        FixedText<maxLineChars> path;
        FixedText<maxLineChars> mode;
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
    ModuleList includeList;
    ModuleList excludeList;

    /// Applies one line. True if it names an output file, which is then in `file`.
    bool applyLine(std::string_view line, FileRequest& file) noexcept;

    /// Whether a call under `moduleName` is wanted by the two lists (names compared without
    /// regard to case). A non-empty include list decides alone.
    bool passesModule(std::string_view moduleName) const noexcept;

    /// The words of the columns that are on, each followed by a blank, and a line feed.
    Header header() const noexcept;
};

}  // namespace tracelog
