#pragma once

#include <atomic>
#include <cstddef>
#include <thread>

/// The most memory that this process has had for itself since the object was made, looked at
/// without pause, in bytes.
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
