#include "qorcontrol/Arrivals.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "common/Clock.h"
#include "facade/Call.h"
#include "facade/FacadeImpl.h"
#include "facade/ReadWithin.h"
#include "facade/SinkStreams.h"
#include "facade/StreamSilence.h"
#include "facade/ValueRing.h"

using qorcontrol::Arrival;
using qorcontrol::Arrivals;
using qorcontrol::Cause;
using sinkstreams::ValueRing;

namespace {

/// So many values are taken out under one lock, behind which the agent waits meanwhile.
constexpr unsigned int chunk = 64;

class ReadCall : public Call {
public:
    using Call::Call;

    /// Why nothing was read. Always false.
    bool fail(Cause cause, std::string reason, const char* check = "") {
        note({cause, "", false, check}, std::make_shared<const std::string>(std::move(reason)));
        return false;
    }
};

unsigned int slotsFor(unsigned int wanted) {
    return std::clamp(wanted, 1u, Arrivals::maxSlots);
}

/// Adds what is there to `values`, at most as much as the ring can hold; false once it is closed
/// and empty. The room is made first: what is out of the ring must not get lost.
bool takeOut(ValueRing& ring, std::vector<Arrival>& values, unsigned int waitMs) {
    std::optional<unsigned int> got = 0u;
    do {
        const std::size_t before = values.size();
        values.resize(before + chunk);
        got = ring.read(chunk, values.size() == chunk ? waitMs : 0,
                        [&](unsigned int i, const Arrival& each) { values[before + i] = each; });
        values.resize(before + got.value_or(0));
    } while (got == chunk && values.size() < Arrivals::maxSlots);
    return got.has_value() || !values.empty();
}

}  // namespace

/// It shares all with the facade and the agent, and so outlives both.
class Arrivals::Impl {
public:
    Impl(const FacadeState& facade, const std::vector<std::string>& names, unsigned int slots)
        : state(facade), ring(std::make_shared<ValueRing>(slotsFor(slots), names.size())) {
        sinkstreams::startParamRead(state, ring, names);
    }

    const FacadeState state;
    const std::shared_ptr<ValueRing> ring;
};

Arrivals::Arrivals(const QorControlFacade& facade, const std::vector<std::string>& names,
                   unsigned int slots) {
    const FacadeState& state = FacadeAccess::stateOf(facade);
    const Call call(state);  // tells where there was no memory
    impl_ = new Impl(state, names, slots);
}

Arrivals::~Arrivals() {
    const std::unique_ptr<const Impl> last(impl_);
    try {
        sinkstreams::stopParamRead(last->state, last->ring.get());
    } catch (const std::bad_alloc&) {
        // It is out of the register; only QOR is not told.
    }
}

bool Arrivals::read(std::vector<Arrival>& values, unsigned int timeoutMs) {
    ReadCall call(impl_->state);
    values.clear();
    bool isOver = false;
    sinkstreams::readWithin(timeoutMs, &call.channel().agent, [&](unsigned int waitMs) {
        isOver = !takeOut(*impl_->ring, values, waitMs);
        return isOver || !values.empty();
    });
    if (!values.empty()) return true;
    if (isOver) return call.fail(Cause::wrongOrder, "it was stopped");
    if (!call.isOperating()) return false;
    sinkstreams::Silence silence = sinkstreams::silenceOf(impl_->ring->preparation());
    return call.fail(silence.cause, std::move(silence.detail), silence.check);
}

bool Arrivals::stop() {
    const bool isTold = sinkstreams::stopParamReadAndWait(impl_->state, impl_->ring.get());
    impl_->ring->close();
    return isTold;
}

std::uint64_t Arrivals::nowMs() {
    return common::now().ms();
}
