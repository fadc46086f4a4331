#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>

namespace qorctl::start {

/// Finds the program that the library starts among the processes of this one, and sees how it ends.
/// A thread of its own looks very often until it has found it: the program may end at once.
class ChildWatch {
public:
    /// `executable`: its path. What runs already does not count.
    explicit ChildWatch(const std::string& executable);
    ~ChildWatch();
    ChildWatch(const ChildWatch&) = delete;
    ChildWatch& operator=(const ChildWatch&) = delete;

    /// From now on it is not looked for any more: QOR answers.
    void lookNoMore() { ended_ = true; }
    bool isFound() const;

    struct End {
        std::optional<unsigned long> exitCode;  ///< none: the system does not tell
    };
    /// It, or what it has started, for people; none if nothing of it runs.
    std::optional<std::string> stillRunning() const;

    /// Of a program that was there, has ended, and has left none behind that it had started.
    std::optional<End> end() const;

private:
    struct CloseIt {
        void operator()(void* handle) const;
    };
    using Handle = std::unique_ptr<void, CloseIt>;

    void run();
    /// Call with `mutex_` held.
    bool hasItselfEnded() const;
    /// False once there is nothing more to look for.
    bool look();

    const std::string name_;
    std::set<unsigned long> before_;
    mutable std::mutex mutex_;
    unsigned long id_ = 0;  // guarded by mutex_; 0: not found
    Handle process_;        // guarded by mutex_; none: it had gone before it could be opened
    std::atomic<bool> ended_{false};
    std::thread thread_;  // last: it uses everything above
};

}  // namespace qorctl::start
