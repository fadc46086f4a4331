// This one stands before windows.h.
#include <winsock2.h>

#include "profile/SystemCalls.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <stdexcept>
#include <type_traits>

#include "Samples.h"
#include "support/ImportTable.h"

namespace profile {
namespace {

/// ROW(function, role)
#define QOR_PROFILED(ROW)                  \
    ROW(FindWindowA, plain)                \
    ROW(GetExitCodeThread, plain)          \
    ROW(GetWindowThreadProcessId, plain)   \
    ROW(InSendMessageEx, plain)            \
    ROW(IsHungAppWindow, plain)            \
    ROW(MsgWaitForMultipleObjectsEx, wait) \
    ROW(PeekMessageA, look)                \
    ROW(ReplyMessage, plain)               \
    ROW(ResetEvent, plain)                 \
    ROW(SendMessageTimeoutA, exchange)     \
    ROW(SetEvent, signal)                  \
    ROW(Sleep, wait)                       \
    ROW(WSAAsyncSelect, plain)             \
    ROW(WaitForSingleObject, wait)         \
    ROW(recv, plain)                       \
    ROW(send, sendOut)

constexpr std::size_t room = 1u << 16;

/// The calls of all threads; it outlives everything, for threads that do so, too.
struct Log {
    std::atomic<bool> isOn{false};
    std::atomic<std::size_t> count{0};
    std::vector<Call> calls = std::vector<Call>(room);
};

Log& theLog() {
    static auto* const only = new Log;
    return *only;
}

/// How deep the calling thread is in calls that are recorded.
thread_local int depth = 0;

HANDLE objectOf(HANDLE object) {
    return object;
}
template <class... Rest>
HANDLE objectOf(HANDLE object, Rest...) {
    return object;
}
HANDLE objectOf(DWORD count, const HANDLE* handles, DWORD, DWORD, DWORD) {
    return count == 1 ? *handles : nullptr;
}
template <class... Any>
HANDLE objectOf(Any...) {
    return nullptr;
}

bool isBrief(HANDLE, DWORD ms) {
    return ms == 0;
}
bool isBrief(DWORD ms) {
    return ms == 0;
}
template <class... Any>
bool isBrief(Any...) {
    return false;
}

/// Of a wait that gave this result. A look that does not wait is no wake.
Wake wakeOf(const char* function, std::uintptr_t result, bool isLook) {
    if (isLook) return Wake::atOnce;
    if (std::strcmp(function, "Sleep") == 0 || result == WAIT_TIMEOUT) return Wake::timer;
    const bool waitsForMessages = std::strcmp(function, "MsgWaitForMultipleObjectsEx") == 0;
    return result == WAIT_OBJECT_0 || !waitsForMessages ? Wake::event : Wake::message;
}

template <class Result>
std::uintptr_t asNumber(Result result) {
    if constexpr (std::is_pointer_v<Result>)
        return reinterpret_cast<std::uintptr_t>(result);
    else
        return static_cast<std::uintptr_t>(result);
}

/// Writes down one call, from its beginning to its end.
class Entry {
public:
    Entry(const char* function, Role role, void* object, bool isLook) : isLook_(isLook) {
        call_.function = function;
        call_.role = role;
        call_.object = object;
        call_.isInside = depth++ != 0;
        call_.startUs = nowUs();
    }
    void end(std::uintptr_t result) {
        call_.endUs = nowUs();
        --depth;
        if (call_.role == Role::wait) call_.wake = wakeOf(call_.function, result, isLook_);
        // Nobody who has waited for messages alone was woken by an object.
        if (call_.wake == Wake::event && call_.object == nullptr) call_.wake = Wake::message;
        call_.thread = GetCurrentThreadId();
        const std::size_t at = theLog().count++;
        if (at < room) theLog().calls[at] = call_;
    }

private:
    Call call_;
    const bool isLook_;
};

template <int line, class Function>
struct InPlaceOf;

/// The system's last error stays what the call has made it.
#define QOR_IN_PLACE(convention)                                                    \
    template <int row, class Result, class... Arguments>                            \
    struct InPlaceOf<row, Result(convention*)(Arguments...)> {                      \
        static inline Result(convention* original)(Arguments...) = nullptr;         \
        static inline const char* name = "";                                        \
        static inline Role role = Role::plain;                                      \
        static Result convention call(Arguments... arguments) {                     \
            if (!theLog().isOn) return original(arguments...);                      \
            Entry entry(name, role, objectOf(arguments...), isBrief(arguments...)); \
            if constexpr (std::is_void_v<Result>) {                                 \
                original(arguments...);                                             \
                entry.end(0);                                                       \
            } else {                                                                \
                const Result result = original(arguments...);                       \
                const DWORD error = GetLastError();                                 \
                entry.end(asNumber(result));                                        \
                SetLastError(error);                                                \
                return result;                                                      \
            }                                                                       \
        }                                                                           \
    };
QOR_IN_PLACE(__stdcall)
#undef QOR_IN_PLACE

enum Row {
#define QOR_ROW(function, role) row##function,
    QOR_PROFILED(QOR_ROW)
#undef QOR_ROW
};

/// The one that is to be called in place of this; null if that one is not recorded.
void* inPlaceOf(const std::string& function, void* original) {
#define QOR_ROW(known, itsRole)                                              \
    if (function == #known) {                                                \
        using Own = InPlaceOf<row##known, decltype(&::known)>;               \
        Own::original = reinterpret_cast<decltype(Own::original)>(original); \
        Own::name = #known;                                                  \
        Own::role = Role::itsRole;                                           \
        return reinterpret_cast<void*>(&Own::call);                          \
    }
    QOR_PROFILED(QOR_ROW)
#undef QOR_ROW
    return nullptr;
}

}  // namespace

Recorder::Recorder() {
    for (const imports::Import& each : imports::of(nullptr))
        if (void* const own = inPlaceOf(each.function, *each.address))
            places_.push_back({each.address, imports::replace(each.address, own)});
}

Recorder::~Recorder() {
    theLog().isOn = false;
    for (const Place& place : places_) {
        try {
            imports::replace(place.address, place.before);
        } catch (const std::runtime_error&) {
            // Ours stays in its place, and only passes on what it is called with.
        }
    }
}

void Recorder::start() {
    theLog().count = 0;
    theLog().isOn = true;
}

std::vector<Call> Recorder::stop() {
    Log& log = theLog();
    log.isOn = false;
    const std::size_t count = log.count;
    if (count > room) throw std::runtime_error("more calls of the system than can be recorded");
    std::vector<Call> calls(log.calls.begin(),
                            log.calls.begin() + static_cast<std::ptrdiff_t>(count));
    std::sort(calls.begin(), calls.end(),
              [](const Call& one, const Call& other) { return one.endUs < other.endUs; });
    return calls;
}

}  // namespace profile
