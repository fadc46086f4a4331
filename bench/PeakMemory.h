#pragma once

#include <atomic>
#include <thread>

/// Bytes that this process has for itself alone.
std::size_t privateBytes();

/// The most of them, looked at without pause, since the object was made.
class PeakMemory {
public:
    PeakMemory();
    ~PeakMemory();
    PeakMemory(const PeakMemory&) = delete;
    PeakMemory& operator=(const PeakMemory&) = delete;

    /// Above what there was at the beginning.
    std::size_t growth() const;

private:
    const std::size_t before_;
    std::atomic<std::size_t> most_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};
