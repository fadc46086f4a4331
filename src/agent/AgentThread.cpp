#include <stdexcept>

#include "agent/QorProtocolAgent.h"
#include "trace/Trace.h"

using tracelog::libraryModule;
using tracelog::trace;

// The agent thread from its start to its end. Nothing that is thrown leaves it. An agent that
// fails in the middle of its work is left as it is, and so is QOR: nobody knows what state either
// is in, and the operator decides.
unsigned int __stdcall QorControlFacade::agentThread(void* facade) {
    const std::shared_ptr<Impl> impl =
        static_cast<QorControlFacade*>(facade)->impl_->shared_from_this();
    std::unique_ptr<QorProtocolAgent> agent;
    try {
        agent = std::make_unique<QorProtocolAgent>(impl);
        while (impl->agentRunning) agent->step();
        agent->finish();
        return 0;
    } catch (const std::runtime_error& error) {
        trace(libraryModule, tracelog::error, 0,
              "Exception when starting QOR Remote agent thread, %s.\n", error.what());
    } catch (...) {
        trace(libraryModule, tracelog::error, 0, "%s",
              "Exception when starting QOR Remote agent thread.\n");
    }
    static_cast<void>(agent.release());
    return 0;
}
