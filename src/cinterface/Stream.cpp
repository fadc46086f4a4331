#include "cinterface/Stream.h"

#include "cinterface/Session.h"

namespace cinterface {

qorcontrol::Outcome Stream::end(std::uint32_t number, bool waits) {
    ring_->close();  // first: whatever else fails, nobody waits for it any more
    const auto session = session_.lock();
    return session == nullptr ? qorcontrol::Outcome() : session->endStream(*ring_, number, waits);
}

}  // namespace cinterface
