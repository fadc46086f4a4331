#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

#include "Pressure.h"

namespace soak {

/// How late the machine itself is: threads that wait as the library's callers do, on an event of
/// which they know that nobody signals it, and note how much longer that took than they had asked.
class Lateness {
public:
    Lateness();
    ~Lateness();
    Lateness(const Lateness&) = delete;
    Lateness& operator=(const Lateness&) = delete;

    /// The worst between two times (on the clock of `nowUs`) and shortly around them, in ms. One
    /// that is late right now counts, too.
    unsigned worstMs(std::uint64_t fromUs, std::uint64_t toUs) const;

    /// Whether programs had to wait for a processor for most of that time, or nobody knows. Then a
    /// few threads that mostly sleep do not see how late others are that do not.
    bool isBusy(std::uint64_t fromUs, std::uint64_t toUs) const;

private:
    static constexpr unsigned watchers = 8;
    static constexpr std::uint64_t sliceUs = 100000;
    static constexpr std::uint64_t slices = 4096;  // some minutes

    struct Slice {
        std::atomic<std::uint64_t> number{0};
        std::atomic<unsigned> worstMs{0};
        std::atomic<std::uint64_t> pressureUs{0};  ///< at some moment in it; 0: not known
    };

    void watch(unsigned watcher);
    void notePressure();
    void note(std::uint64_t fromUs, std::uint64_t toUs, unsigned lateMs);
    void noteIn(std::uint64_t number, unsigned lateMs);

    const Pressure pressure_;
    std::array<Slice, slices> slices_;
    std::array<std::atomic<std::uint64_t>, watchers> dueUs_{};
    std::atomic<bool> ends_{false};
    std::vector<std::thread> threads_;
};

}  // namespace soak
