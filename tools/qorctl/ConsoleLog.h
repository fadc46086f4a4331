#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "Console.h"
#include "QorControlFacade.h"

namespace qorctl {

/// The library's host-facing log lines, shown as they come and kept for the results.
class ConsoleLog final : public EolLog {
public:
    explicit ConsoleLog(Console& console) : console_(console) {}

    void reserved1(const char* format, ...) const override;
    void info(const char* format, ...) const override;
    void error(const char* format, ...) const override;

    /// The latest ten thousand.
    std::vector<std::string> lines() const;

    /// Gets every line, on the thread that writes it, with its level: "info" or "error". An empty
    /// one ends that, and returns when none is under way.
    using Listener = std::function<void(const char* level, const std::string& line)>;
    void listen(Listener listener) const;

private:
    void add(const char* level, const std::string& line) const;

    Console& console_;
    mutable std::mutex mutex_;
    mutable std::deque<std::string> lines_;  // guarded by mutex_
    mutable std::mutex listening_;
    mutable Listener listener_;  // guarded by listening_, also while it runs
};

}  // namespace qorctl
