#include "cinterface/Stream.h"

#include "cinterface/Session.h"

namespace cinterface {

void Stream::end(std::uint32_t number) {
    if (const auto session = session_.lock()) session->endStream(*ring_, number);
    ring_->close();
}

}  // namespace cinterface
