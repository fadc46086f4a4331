#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

/// A host thread that does the same again and again, for the life of the object: takes what comes.
class Taker {
public:
    explicit Taker(std::function<void()> takeOne)
        : thread_([this, takeOne = std::move(takeOne)] {
              while (!stop_) takeOne();
          }) {}
    ~Taker() {
        stop_ = true;
        thread_.join();
    }
    Taker(const Taker&) = delete;
    Taker& operator=(const Taker&) = delete;

private:
    std::atomic<bool> stop_{false};
    std::thread thread_;
};
