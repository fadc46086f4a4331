#pragma once

#include <functional>
#include <thread>
#include <vector>

/// Threads that do something at the same time; joined when this object ends. They are the native
/// library's own, so that their end is known to the sanitizer.
class Crowd {
public:
    Crowd() = default;
    ~Crowd() { join(); }
    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;

    /// Starts `count` threads more, each with its number among them.
    void add(int count, const std::function<void(int thread)>& body) {
        for (int i = 0; i < count; ++i) threads_.emplace_back(body, i);
    }

    void join() {
        for (std::thread& thread : threads_) thread.join();
        threads_.clear();
    }

private:
    std::vector<std::thread> threads_;
};
