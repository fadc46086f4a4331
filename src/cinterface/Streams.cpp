// Streams of values and of trouble codes.

#include <optional>
#include <utility>

#include "cinterface/Arguments.h"
#include "cinterface/OutBuffer.h"
#include "cinterface/Shell.h"
#include "cinterface/Stream.h"
#include "cinterface/TroubleCodes.h"
#include "common/Clock.h"
#include "facade/CauseTexts.h"
#include "facade/ReadWithin.h"
#include "facade/StreamSilence.h"

using cinterface::call;
using cinterface::callOn;
using cinterface::Cause;
using cinterface::CodeBox;
using cinterface::failure;
using cinterface::mustNotBeNull;
using cinterface::Outcome;
using cinterface::process;
using cinterface::refuse;
using cinterface::refuseArgument;
using cinterface::Session;
using cinterface::Stream;
using cinterface::timeOutOf;
using sinkstreams::readWithin;
using sinkstreams::ValueRing;

namespace {

constexpr unsigned int maxSlots = 1000000;

/// A stream is a number like a handle, and never followed.
std::uint32_t numberOf(QorStream stream) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(stream));
}

[[noreturn]] void refuseStream() {
    refuse(Cause::badHandle, "it is no stream, or one that has ended");
}

/// `session` may be null.
Outcome nothingYet(const Session* session) {
    if (session != nullptr && !session->isOperating()) return session->agentsEnd();
    return failure(Cause::notReady, "QOR has sent none in this time");
}

/// The same for values: a name that QOR does not know keeps all of the stream silent.
Outcome nothingOf(ValueRing& ring, const Session* session) {
    if (session != nullptr && !session->isOperating()) return session->agentsEnd();
    const sinkstreams::Silence silence = sinkstreams::silenceOf(ring.preparation());
    Outcome outcome = failure(silence.cause, silence.detail);
    if (*silence.check != '\0') outcome.check = silence.check;
    return outcome;
}

/// Of four rounds of reading trouble codes of which the last one has ended so.
Outcome silenceOf(const common::Verdict& last) {
    Outcome outcome = failure(Cause::noData, "");
    // What the cause itself says fits neither a read that was not even begun nor one that failed
    // otherwise.
    outcome.sentence =
        last.cause == Cause::ecuOffline
            ? "Four times in a row the trouble codes were not read: " + std::string(last.detail) +
                  "."
            : "Four reads of the trouble codes in a row have failed, the last one because: " +
                  causetexts::sentence(last.cause, last.detail);
    return outcome;
}

/// Null where there is no session any more.
const channel::AgentLife* agentOf(const Session* session) {
    return session == nullptr ? nullptr : &session->channel().agent;
}

QorSample sampleOf(const qorcontrol::Arrival& arrival) {
    return {arrival.name, arrival.missed, arrival.value, static_cast<double>(arrival.timeMs)};
}

}  // namespace

double QOR_CALL QorNowMs(void) {
    return static_cast<double>(common::now().ms());
}

int QOR_CALL QorStartParamRead(QorHandle handle, const char* const* names, unsigned int nameCount,
                               unsigned int slots, QorStream* stream) {
    return callOn(handle, [&](Session& session) -> Outcome {
        const auto all = cinterface::namesOf(names, nameCount);
        if (all.empty()) refuseArgument("nameCount is 0");
        if (slots == 0 || slots > maxSlots) refuseArgument("slots is not within 1 to 1,000,000");
        mustNotBeNull(stream, "stream");
        const std::uint32_t number = session.startStream(all, slots);
        *stream = reinterpret_cast<QorStream>(std::uintptr_t{number});
        return {};
    });
}

int QOR_CALL QorReadParamStream(QorStream stream, QorSample* samples, unsigned int capacity,
                                unsigned int* count, unsigned int timeoutMs) {
    return call([&]() -> Outcome {
        const auto found = process().streams.find(numberOf(stream));
        if (found == nullptr) refuseStream();
        mustNotBeNull(samples, "samples");
        mustNotBeNull(count, "count");
        if (capacity == 0) refuseArgument("capacity is 0");
        const auto session = found->session();
        std::optional<unsigned int> got;
        readWithin(timeoutMs, agentOf(session.get()), [&](unsigned int waitMs) {
            got = found->ring().read(capacity, waitMs, [&](unsigned int i, const auto& arrival) {
                samples[i] = sampleOf(arrival);
            });
            return !got || *got != 0;
        });
        if (!got) refuseStream();
        if (*got == 0) return nothingOf(found->ring(), session.get());
        *count = *got;
        return {};
    });
}

int QOR_CALL QorStopParamRead(QorStream stream) {
    return call([&]() -> Outcome {
        const std::uint32_t number = numberOf(stream);
        const auto found = process().streams.remove(number);
        if (found == nullptr) refuseStream();
        return found->end(number, true);
    });
}

int QOR_CALL QorStartDtcRead(QorHandle handle, unsigned int timeoutMs, unsigned int periodMs) {
    return callOn(handle, [&](Session& session) {
        return session.startCodes(timeOutOf(timeoutMs), periodMs);
    });
}

int QOR_CALL QorReadDtcStream(QorHandle handle, unsigned int timeoutMs, QorDtc* dtcs,
                              unsigned int capacity, unsigned int* needed, double* timeMs,
                              unsigned int* missed) {
    return callOn(handle, [&](Session& session) -> Outcome {
        const cinterface::OutBuffer<QorDtc> out(dtcs, capacity, needed, "dtcs");
        const auto box = session.codes();
        CodeBox::Read read;
        read.found = CodeBox::Found::closed;
        if (box != nullptr)
            readWithin(timeoutMs, agentOf(&session), [&](unsigned int waitMs) {
                read = box->read(waitMs);
                return read.found != CodeBox::Found::nothing;
            });
        if (read.found == CodeBox::Found::closed)
            refuse(Cause::wrongOrder, "no trouble codes are being read");
        if (read.found == CodeBox::Found::nothing) return nothingYet(&session);
        if (read.found == CodeBox::Found::silence) return silenceOf(read.silence);
        if (timeMs != nullptr) *timeMs = static_cast<double>(read.arrival.ms());
        if (missed != nullptr) *missed = read.missed;
        Outcome outcome;
        outcome.mayBelongToEarlier = read.mayBelongToEarlier;
        const auto result = session.keep(cinterface::resultOf(std::move(read.codes)));
        return cinterface::with(outcome, out.put(*result->dtcs));
    });
}

int QOR_CALL QorStopDtcRead(QorHandle handle) {
    return callOn(handle, [&](Session& session) { return session.stopCodes(); });
}
