#pragma once

#include <atomic>
#include <deque>
#include <string>
#include <thread>
#include <vector>

#include "Operations.h"
#include "Report.h"

namespace soak {

/// The host's threads, which call the library at random, or rest.
class Load {
public:
    enum class Mode { rest, few, crowd, warm };

    Load(Report& report, Judge& judge, std::uint64_t seed, unsigned threads);
    ~Load();
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

    /// Lets them call it: `few` at a time, or as many as there are.
    void begin(const QorControlFacade& qor, Mode mode);
    /// Waits until all rest; false if some do not.
    bool rest(unsigned patienceMs);
    /// Each thread makes each call once, so that what the library keeps per thread is there.
    void warmUp(const QorControlFacade& qor);

    /// What a worker does now, for the story of one that does not come back.
    std::string busy();
    /// One step of every kind on the calling thread, which all must work.
    void verify(const QorControlFacade& qor, const std::string& where);

private:
    void verifyOne(const QorControlFacade& qor, const std::string& where,
                   const Operation& operation);
    /// With so many at once no request is pushed out of the library's queue, even beside the two
    /// of the thread that gives the orders.
    static constexpr unsigned fewAtOnce = 7;

    struct Place {
        Worker worker;
        std::string doing;  // guarded by lock_
        std::atomic<bool> isCold{false};
        bool isOfFew = false;
    };

    void work(Place& place);
    bool enter(Place& place);
    void leave(Place& place);
    void takeTurn(Place& place);
    void step(Place& place, const QorControlFacade& qor, Mode mode);
    void warm(Place& place, const QorControlFacade& qor);
    void note(Place& place, const std::string& doing);
    std::string whereOf(const Worker& worker, const char* operation) const;

    Report& report_;
    Judge& judge_;
    const std::uint64_t seed_;
    Lock lock_;
    const Handle mayGo_{CreateEventA(nullptr, TRUE, FALSE, nullptr)};
    const Handle few_{CreateSemaphoreA(nullptr, fewAtOnce, fewAtOnce, nullptr)};
    std::atomic<Mode> mode_{Mode::rest};
    std::atomic<const QorControlFacade*> qor_{nullptr};
    std::atomic<unsigned> active_{0}, warming_{0};
    std::atomic<bool> ends_{false};
    Worker verifier_;
    bool hasGivenUp_ = false;  // who verifies, an answer
    std::deque<Place> places_;
    std::vector<std::thread> threads_;
};

}  // namespace soak
