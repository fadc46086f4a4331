#pragma once

#include <string>

namespace qorctl {

/// The library's trace file, where a person looks after a failure.
class TraceFile {
public:
    /// Of the library, for a host of that path; where another program has that file open, one of
    /// this process's own beside it.
    explicit TraceFile(const std::string& hostPath);
    /// Removes what was only for this process: its trace settings, not its trace.
    ~TraceFile();
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    const std::string& path() const { return path_; }

    /// The one that another program has open; empty if none has.
    const std::string& held() const { return held_; }

    /// Removes what an earlier run left, so that it is never taken for this one's.
    void removeOld() const;

    /// Whether there is one; the library does without if it cannot write it.
    bool exists() const;

private:
    std::string path_;
    std::string held_;
    std::string settings_;  // a copy of its own; empty: none
};

}  // namespace qorctl
