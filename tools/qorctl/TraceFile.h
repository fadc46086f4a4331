#pragma once

#include <string>

namespace qorctl {

/// The library's trace file, where a person looks after a failure.
class TraceFile {
public:
    explicit TraceFile(std::string path);

    const std::string& path() const { return path_; }

    /// Removes what an earlier run left, so that it is never taken for this one's.
    void removeOld() const;

    /// Whether there is one; the library does without if it cannot write it.
    bool exists() const;

private:
    const std::string path_;
};

}  // namespace qorctl
