#include "cinterface/Stream.h"

#include "cinterface/Session.h"
#include "facade/SinkStreams.h"

namespace cinterface {

void Stream::end() {
    if (const auto session = session_.lock())
        sinkstreams::stopParamRead(session->state(), ring_.get());
    ring_->close();
}

}  // namespace cinterface
