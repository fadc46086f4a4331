#include "profile/RequestPath.h"

#include <algorithm>
#include <map>

namespace profile {
namespace {

/// Walks backwards; the hops that it has found are in that order.
class Walk {
public:
    Walk(const std::vector<Call>& calls, unsigned int host, double startUs)
        : calls_(calls), startUs_(startUs), thread_(host) {
        nameOf(host);
    }

    void from(double us) {
        at_ = us;
        while (at_ > startUs_ && stepBack()) {
        }
    }
    std::vector<Hop> hops;

private:
    /// To the end of the wait before; false when there is none, and the request has begun here.
    bool stepBack() {
        const Call* const wait = waitBefore();
        const double began = wait != nullptr ? wait->endUs : startUs_;
        addWork(std::max(began, startUs_));
        if (wait == nullptr) return false;
        return wait->wake == Wake::event ? toSignaller(*wait) : toSend(*wait);
    }

    const Call* waitBefore() const {
        return lastOf([&](const Call& call) {
            return call.thread == thread_ && call.role == Role::wait && call.endUs <= at_ &&
                   call.endUs > startUs_ &&
                   (call.wake == Wake::event || call.wake == Wake::message);
        });
    }

    /// The thread that has set the event.
    bool toSignaller(const Call& wait) {
        const Call* const signal = lastOf([&](const Call& call) {
            return call.role == Role::signal && call.object == wait.object &&
                   call.startUs < wait.endUs && call.startUs > startUs_;
        });
        if (signal == nullptr) return false;
        addHop("wake: " + nameOf(signal->thread) + " to " + nameOf(thread_), wait.endUs,
               signal->startUs, {});
        thread_ = signal->thread;
        return true;
    }

    /// What this thread has sent before it waited for a message.
    bool toSend(const Call& wait) {
        const Call* const sent = lastOf([&](const Call& call) {
            return call.thread == thread_ && call.endUs <= wait.endUs && call.startUs > startUs_ &&
                   (call.role == Role::sendOut || call.role == Role::exchange);
        });
        if (sent == nullptr) return false;
        addHop("QOR and the system", wait.endUs, sent->endUs, {});
        return true;
    }

    void addWork(double began) {
        std::vector<const Call*> during;
        for (const Call& call : calls_)
            if (call.thread == thread_ && !call.isInside && call.startUs >= began &&
                call.endUs <= at_)
                during.push_back(&call);
        addHop(nameOf(thread_), at_, began, during);
    }

    void addHop(std::string name, double end, double start, const std::vector<const Call*>& calls) {
        Hop hop;
        hop.name = std::move(name);
        hop.us = end - start;
        for (const Call* const call : calls) {
            hop.inSystemUs += call->us();
            hop.calls.emplace_back(call->function);
        }
        hops.push_back(std::move(hop));
        at_ = start;
    }

    template <class Predicate>
    const Call* lastOf(Predicate is) const {
        const auto found = std::find_if(calls_.rbegin(), calls_.rend(), is);
        return found != calls_.rend() ? &*found : nullptr;
    }

    /// By the order in which they are met: the host, its agent, the agent's worker.
    const std::string& nameOf(unsigned int thread) {
        static const char* const names[] = {"host", "agent", "worker"};
        constexpr std::size_t last = std::size(names) - 1;
        return names_.try_emplace(thread, names[std::min(names_.size(), last)]).first->second;
    }

    const std::vector<Call>& calls_;
    const double startUs_;
    unsigned int thread_;
    double at_ = 0;
    std::map<unsigned int, std::string> names_;
};

}  // namespace

std::vector<Hop> pathOf(const std::vector<Call>& calls, unsigned int host, double startUs,
                        double endUs) {
    Walk walk(calls, host, startUs);
    walk.from(endUs);
    std::reverse(walk.hops.begin(), walk.hops.end());
    return std::move(walk.hops);
}

}  // namespace profile
