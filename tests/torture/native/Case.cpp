#include "Case.h"

#include <sanitizer/lsan_interface.h>

#include <chrono>
#include <cstdio>
#include <new>
#include <thread>

#include "agent/QorProtocolAgent.h"
#include "Kernel.h"
#include "qorcontrol/Outcome.h"
#include "QorPeer.h"
#include "TraceLines.h"

namespace torture {
namespace {

using qorcontrol::Cause;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// No operation may take longer: opening a model has 98 s of the library's time.
constexpr milliseconds longestOperation{15000};
constexpr milliseconds untilThreadsEnd{10000};
constexpr milliseconds untilStartIsCleared{3000};
constexpr const char* agentFailed = "Exception when starting QOR Remote agent thread";

/// What a case has found to be wrong.
class Findings {
public:
    void expect(bool isRight, const char* what) {
        if (isRight) return;
        std::fprintf(stderr, "wrong: %s\n", what);
        ++count_;
    }
    int exitCode() const { return count_ == 0 ? 0 : 1; }

private:
    int count_ = 0;
};

/// On a thread that is watched, as long as something can fail.
Result play(const Operation& operation, Host& host) {
    beginHere();
    const Watched watched;
    try {
        return operation.run(host) ? Result::worked : Result::failed;
    } catch (const std::bad_alloc&) {
        return Result::threw;
    }
}

bool waitFor(milliseconds most, bool (*isSo)()) {
    const auto end = steady_clock::now() + most;
    while (!isSo()) {
        if (steady_clock::now() > end) return false;
        std::this_thread::sleep_for(milliseconds(1));
    }
    return true;
}

bool hasAgentFailed() {
    return traceLines().find(agentFailed) != std::string::npos;
}

/// Behind an operation: a facade that works does the next one, one whose agent has ended says why
/// it does not.
void expectNextWorks(const Host& host, Findings& findings) {
    if (host.facade == nullptr || host.awaitAnswer()) return;
    const qorcontrol::Outcome outcome = qorcontrol::lastOutcome();
    findings.expect(!host.facade->pingQor(timeoutMs), "QOR answers late");
    findings.expect(outcome.cause == Cause::agentEnded || outcome.cause == Cause::systemFailure,
                    "no documented cause");
    findings.expect(!outcome.sentence.empty() && !outcome.check.empty(), "a text is missing");
    std::fprintf(stderr, "%d: %s\n", static_cast<int>(outcome.cause), outcome.sentence.c_str());
}

void expectAnotherFacadeWorks(Findings& findings) {
    const QorPeer qor("/another");
    Host host("/another");
    findings.expect(host.start(), "another facade does not work");
}

bool hasNoThread() {
    return threadsOfLibrary() == 0;
}

/// An agent that failed in the middle of its work is left as it is, with what is its own; one that
/// failed on the way there is cleared up.
bool isAgentLeft(const Operation& operation) {
    return hasAgentFailed() &&
           (operation.needsFacade || !waitFor(untilStartIsCleared, hasNoThread));
}

void expectNothingIsLeft(bool isAgentThere, Findings& findings) {
    const auto oneThread = [] { return threadsOfLibrary() <= 1; };  // its TCP worker
    const bool ended =
        isAgentThere ? waitFor(untilThreadsEnd, oneThread) : waitFor(untilThreadsEnd, hasNoThread);
    findings.expect(ended, "a thread is left");
    if (!isAgentThere) {
        letGoOfBlocks();
        findings.expect(openThreadHandles() == 0, "a thread's handle is left");
        findings.expect(moduleReferences() == 0, "a reference on the module is left");
    }
    findings.expect(__lsan_do_recoverable_leak_check() == 0, "memory is left");
}

/// Whose state cannot be read when the host wants it to end: nobody waits for it then, and it goes
/// on with all that is its own.
bool staysByOrder(const Operation& operation, const Site& site) {
    const std::string name = nameOf(site);
    return operation.name == std::string("destruction") && site.call == Call::exitCode &&
           name.find("AgentLife::state < QorControlFacade::") != std::string::npos;
}

}  // namespace

int playAndRecord(const Operation& operation) {
    const QorPeer qor("/qor");
    Host host("/qor");
    if (operation.needsFacade && !host.start()) return 1;
    record();
    const Result result = play(operation, host);
    rest();
    return result == Result::worked ? 0 : 1;
}

int playAndFail(const Operation& operation, const Site& site) {
    Findings findings;
    keepBlocksOf(sizeof(QorProtocolAgent));  // such an agent belongs to nobody
    {
        const QorPeer qor("/qor");
        Host host("/qor");
        if (operation.needsFacade && !host.start()) return 2;
        fail(site);
        const auto start = steady_clock::now();
        const Result result = play(operation, host);
        findings.expect(steady_clock::now() - start < longestOperation, "it took too long");
        const std::string complaint = complaintAbout(operation, result);
        findings.expect(complaint.empty(), complaint.c_str());
        rest();
        expectNextWorks(host, findings);
        host.arrivals.reset();
        host.facade.reset();
        if (!staysByOrder(operation, site)) expectNothingIsLeft(isAgentLeft(operation), findings);
    }
    expectAnotherFacadeWorks(findings);
    if (findings.exitCode() != 0) std::fprintf(stderr, "trace:\n%s", traceLines().c_str());
    return findings.exitCode();
}

}  // namespace torture
