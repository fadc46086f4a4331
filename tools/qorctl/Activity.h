#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "Console.h"

namespace qorctl {

/// Shows from a thread of its own that something goes on while the caller waits for it: on a
/// terminal a moving bar with the time and the state, elsewhere one line per new state. The bar
/// has no end on purpose: nobody tells how far the awaited thing has come.
class Activity {
public:
    /// `state` says in a few words what is being waited for; it is called on the activity's
    /// thread and must be valid until the destructor has returned.
    Activity(Console& console, std::string title, std::function<std::string()> state);
    /// Erases the bar.
    ~Activity();
    Activity(const Activity&) = delete;
    Activity& operator=(const Activity&) = delete;

private:
    void run();
    void show(unsigned int tick);
    double elapsedS() const;

    Console& console_;
    const std::string title_;
    const std::function<std::string()> state_;
    const std::chrono::steady_clock::time_point start_;
    std::string lastState_;  // the activity's thread only
    std::mutex mutex_;
    std::condition_variable ending_;
    bool ended_ = false;  // guarded by mutex_
    std::thread thread_;  // last: it uses everything above
};

}  // namespace qorctl
