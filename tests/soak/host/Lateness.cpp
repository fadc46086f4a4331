#include "Lateness.h"

#include <algorithm>
#include <memory>
#include <string>

#include "qorcontrol/Event.h"
#include "Stamps.h"

namespace soak {

namespace {

constexpr unsigned waitMs = 20;
/// Around a call: the machine does not stumble for all threads at the same moment.
constexpr std::uint64_t aroundUs = 300000;

/// As a call does, whose threads all want the same lock of the heap: who holds it may be put aside
/// by the machine, and then the others are late, too.
void useHeap() {
    std::vector<std::unique_ptr<std::string>> blocks;
    for (std::size_t size = 20; size < 500; size += 20)
        blocks.push_back(std::make_unique<std::string>(size, 'x'));
}

}  // namespace

Lateness::Lateness() {
    for (unsigned i = 0; i < watchers; ++i) threads_.emplace_back([this, i] { watch(i); });
}

Lateness::~Lateness() {
    ends_ = true;
    for (std::thread& thread : threads_) thread.join();
}

void Lateness::watch(unsigned watcher) {
    common::Event nobodySignals;
    while (!ends_) {
        const std::uint64_t start = nowUs();
        dueUs_[watcher] = start + waitMs * 1000;
        nobodySignals.wait(waitMs);
        useHeap();
        const std::uint64_t end = nowUs();
        const std::uint64_t due = dueUs_[watcher];
        if (watcher == 0) notePressure();
        if (end > due) note(start, end, static_cast<unsigned>((end - due) / 1000));
    }
}

void Lateness::notePressure() {
    const std::uint64_t number = nowUs() / sliceUs;
    Slice& slice = slices_[number % slices];
    noteIn(number, 0);
    if (slice.pressureUs == 0) slice.pressureUs = pressure_.totalUs().value_or(0);
}

bool Lateness::isBusy(std::uint64_t fromUs, std::uint64_t toUs) const {
    const std::uint64_t first = (fromUs - std::min(fromUs, aroundUs)) / sliceUs;
    std::uint64_t begin = 0, beginNumber = 0, end = 0, endNumber = 0;
    for (std::uint64_t number = first; number <= toUs / sliceUs; ++number) {
        const Slice& slice = slices_[number % slices];
        if (slice.number != number || slice.pressureUs == 0) continue;
        if (begin == 0) {
            begin = slice.pressureUs;
            beginNumber = number;
        }
        end = slice.pressureUs;
        endNumber = number;
    }
    return endNumber == beginNumber || (end - begin) * 2 > (endNumber - beginNumber) * sliceUs;
}

void Lateness::note(std::uint64_t fromUs, std::uint64_t toUs, unsigned lateMs) {
    const std::uint64_t last = toUs / sliceUs;
    const std::uint64_t first = std::max(fromUs / sliceUs, last - std::min(last, slices - 1));
    for (std::uint64_t number = first; number <= last; ++number) noteIn(number, lateMs);
}

// Two watchers may begin a slice at once; then one of two values of the same moment is lost.
void Lateness::noteIn(std::uint64_t number, unsigned lateMs) {
    Slice& slice = slices_[number % slices];
    if (slice.number.exchange(number) != number) {
        slice.worstMs = lateMs;
        slice.pressureUs = 0;
    }
    unsigned worst = slice.worstMs;
    while (worst < lateMs && !slice.worstMs.compare_exchange_weak(worst, lateMs)) {
    }
}

unsigned Lateness::worstMs(std::uint64_t fromUs, std::uint64_t toUs) const {
    unsigned worst = 0;
    const std::uint64_t last = (toUs + aroundUs) / sliceUs;
    for (std::uint64_t number = (fromUs - std::min(fromUs, aroundUs)) / sliceUs; number <= last;
         ++number) {
        const Slice& slice = slices_[number % slices];
        if (slice.number == number) worst = std::max(worst, slice.worstMs.load());
    }
    const std::uint64_t now = nowUs();
    for (const auto& due : dueUs_) {
        if (now > due) worst = std::max(worst, static_cast<unsigned>((now - due) / 1000));
    }
    return worst;
}

}  // namespace soak
