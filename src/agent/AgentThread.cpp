#include <new>
#include <stdexcept>

#include "agent/QorProtocolAgent.h"
#include "trace/Trace.h"

using tracelog::libraryModule;
using tracelog::trace;

namespace {

/// Of the exception that is being handled and is no std::runtime_error.
const char* textOfPresent() {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return "it ran out of memory";
    } catch (...) {
        return "an exception that it did not expect";
    }
}

}  // namespace

// The agent thread from its start to its end. Nothing that is thrown leaves it. A failure is told
// before anything is cleared up, which may take a second: from then on every operation fails at
// once. An agent that fails in the middle of its work is left as it is, and so is QOR: nobody
// knows what state either is in, and the operator decides.
unsigned int __stdcall QorControlFacade::agentThread(void* share) {
    using Share = std::shared_ptr<channel::Channel>;
    const std::unique_ptr<Share> own(static_cast<Share*>(share));
    const Share channel = *own;
    std::unique_ptr<QorProtocolAgent> agent;
    bool isWorking = false;
    const auto noteEnd = [&](const char* reason) {
        channel->agent.noteEnd(qorcontrol::Cause::agentEnded, reason);
    };
    try {
        agent = std::make_unique<QorProtocolAgent>(channel);
        agent->start();
        isWorking = true;
        while (channel->agent.mayGoOn()) agent->step();
        agent->finish();
        return 0;
    } catch (const std::runtime_error& error) {
        trace(libraryModule, tracelog::error, 0,
              "Exception when starting QOR Remote agent thread, %s.\n", error.what());
        noteEnd(error.what());
    } catch (...) {
        trace(libraryModule, tracelog::error, 0, "%s",
              "Exception when starting QOR Remote agent thread.\n");
        noteEnd(textOfPresent());
    }
    channel->agent.noteFailure();
    if (isWorking) static_cast<void>(agent.release());
    return 0;
}
