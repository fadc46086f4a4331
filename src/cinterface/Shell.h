#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "cinterface/Process.h"
#include "cinterface/QorControl.h"
#include "cinterface/Refusal.h"
#include "cinterface/Session.h"
#include "common/Clock.h"

namespace cinterface {

/// Of an operation of the facade that this thread has just called.
Outcome outcomeOf(bool succeeded);

/// Keeps for the calling thread how its call ended; gives the number for the host.
int noteCall(Outcome&& outcome, common::Moment start) noexcept;

Outcome outOfMemory();
Outcome systemFailure(const char* what);

/// What each exported function that tells a cause is made of: nothing that is thrown leaves it, and
/// how it ended is kept for QorLast.... `body` gives an Outcome or throws a Refusal.
template <class Body>
int call(Body&& body) noexcept {
    const common::Moment start = common::now();
    try {
        try {
            return noteCall(body(), start);
        } catch (Refusal& refusal) {
            return noteCall(std::move(refusal.outcome), start);
        } catch (const std::bad_alloc&) {
            return noteCall(outOfMemory(), start);
        } catch (const std::exception& error) {
            return noteCall(systemFailure(error.what()), start);
        } catch (...) {
            return noteCall(systemFailure("something odd was thrown"), start);
        }
    } catch (...) {  // there is no memory for the words
        return noteCall(Outcome{Cause::outOfMemory, false, 0, {}, {}}, start);
    }
}

/// A handle is a number, and never followed.
inline std::uint32_t numberOf(QorHandle handle) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle));
}

/// Throws a Refusal if there is none.
std::shared_ptr<Session> sessionOf(QorHandle handle);
[[noreturn]] void refuseHandle();

/// How a call ended of which `outcome` is the first part and `more` what came behind its success.
Outcome with(Outcome outcome, Outcome more);

/// The same for what is done with a handle: `body` gets its Session, which lives as long as that.
template <class Body>
int callOn(QorHandle handle, Body&& body) noexcept {
    return call([&] { return body(*sessionOf(handle)); });
}

}  // namespace cinterface
