#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace qorctl {

/// The library's trace file, read while the library writes it, to say where to look after a
/// failure.
class TraceFile {
public:
    struct Line {
        std::size_t number = 0;  ///< from 1
        std::string text;        ///< without level and indentation
    };

    explicit TraceFile(std::string path);

    const std::string& path() const { return path_; }

    /// Removes what an earlier run left, so that it is never taken for this one's.
    void removeOld() const;

    /// Whether there is one; the library does without if it cannot write it.
    bool exists() const;

    std::size_t lineCount() const;

    /// What tells most about a failure behind line `after`: the first error there, else the first
    /// warning, else the last line; none if nothing was written.
    std::optional<Line> failureBehind(std::size_t after) const;

    /// Why the library gave up starting QOR, on one line; none if it has not.
    std::optional<Line> startFailure() const;

private:
    /// The complete lines; empty if the file cannot be read.
    std::vector<std::string> read() const;

    const std::string path_;
};

}  // namespace qorctl
