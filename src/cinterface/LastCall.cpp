// What the calling thread's last call left behind. None of these counts as a call itself.

#include "cinterface/OutBuffer.h"
#include "cinterface/Process.h"
#include "cinterface/QorControl.h"
#include "cinterface/Text.h"
#include "qorcontrol/Outcome.h"

using cinterface::Outcome;

namespace {

/// Null if the thread has called nothing yet.
const Outcome* lastCall() {
    const cinterface::ThreadState* const state = cinterface::process().threads.find();
    return state == nullptr ? nullptr : &state->lastCall;
}

/// A number of it, 0 if the thread has called nothing yet; `without` if there is no memory for the
/// process's first look.
template <class Number, class Take>
Number ofLastCall(Number without, Take&& take) noexcept {
    try {
        const Outcome* const last = lastCall();
        return last == nullptr ? Number() : take(*last);
    } catch (...) {
        return without;
    }
}

/// One of its texts.
int textOfLastCall(std::string Outcome::*which, char* text, unsigned int capacity,
                   unsigned int* needed) noexcept {
    try {
        const cinterface::OutText out(text, capacity, needed, "text");
        const Outcome* const last = lastCall();
        const std::string content = last == nullptr ? std::string() : last->*which;
        return static_cast<int>(out.put(cinterface::text::shownUtf8Of(content)).cause);
    } catch (const cinterface::Refusal& refusal) {
        return static_cast<int>(refusal.outcome.cause);
    } catch (...) {
        return QOR_OUT_OF_MEMORY;
    }
}

struct NamedCause {
    int cause;
    const char* name;
};

#define QOR_NAMED(cause) \
    { cause, #cause }
constexpr NamedCause namedCauses[] = {
    QOR_NAMED(QOR_OK),
    QOR_NAMED(QOR_AGENT_ENDED),
    QOR_NAMED(QOR_AGENT_BUSY),
    QOR_NAMED(QOR_PUSHED_OUT),
    QOR_NAMED(QOR_NO_CONNECTION),
    QOR_NAMED(QOR_SILENT),
    QOR_NAMED(QOR_NO_DATA),
    QOR_NAMED(QOR_REFUSED),
    QOR_NAMED(QOR_UNKNOWN_NAME),
    QOR_NAMED(QOR_KWP_BEFORE_CONNECT),
    QOR_NAMED(QOR_CANCELLED),
    QOR_NAMED(QOR_CONNECT_REPORTED),
    QOR_NAMED(QOR_ECU_OFFLINE),
    QOR_NAMED(QOR_RESULT_TOO_LARGE),
    QOR_NAMED(QOR_BAD_ARGUMENT),
    QOR_NAMED(QOR_OUT_OF_MEMORY),
    QOR_NAMED(QOR_REQUEST_TOO_LARGE),
    QOR_NAMED(QOR_CHANGED),
    QOR_NAMED(QOR_BAD_ANSWER),
    QOR_NAMED(QOR_SYSTEM_FAILURE),
    QOR_NAMED(QOR_BAD_HANDLE),
    QOR_NAMED(QOR_NOT_READY),
    QOR_NAMED(QOR_WRONG_ORDER),
};
#undef QOR_NAMED

}  // namespace

int QOR_CALL QorLastCause(void) {
    return ofLastCall(QOR_OUT_OF_MEMORY,
                      [](const Outcome& last) { return static_cast<int>(last.cause); });
}

int QOR_CALL QorLastSentence(char* text, unsigned int capacity, unsigned int* needed) {
    return textOfLastCall(&Outcome::sentence, text, capacity, needed);
}

int QOR_CALL QorLastCheck(char* text, unsigned int capacity, unsigned int* needed) {
    return textOfLastCall(&Outcome::check, text, capacity, needed);
}

unsigned int QOR_CALL QorLastElapsedMs(void) {
    return ofLastCall(0u, [](const Outcome& last) { return last.elapsedMs; });
}

int QOR_CALL QorLastMayBelongToEarlier(void) {
    return ofLastCall(0, [](const Outcome& last) { return last.mayBelongToEarlier ? 1 : 0; });
}

const char* QOR_CALL QorCauseName(int cause) {
    for (const NamedCause& named : namedCauses)
        if (named.cause == cause) return named.name;
    return "unknown";
}
