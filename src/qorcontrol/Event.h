#pragma once

#include "qorcontrol/Export.h"

namespace common {

/// An unnamed auto-reset event, initially not signalled: each signal lets one wait through.
///
/// Where the system could not create it, `exists` is false, signals do nothing and waits return
/// false at once. Every call but `exists` is a kernel call: keep them off hot paths.
class QOR_API Event {
public:
    /// "Wait without end" for `wait`.
    static constexpr unsigned int infinite = 0xFFFFFFFFu;

    Event() noexcept;
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    bool exists() const noexcept { return handle_ != nullptr; }
    void signal() noexcept;
    void reset() noexcept;

    /// Waits at most `timeoutMs`; true if a signal came (and was taken).
    bool wait(unsigned int timeoutMs) noexcept;

    /// The system handle, for a wait on several things at once; owned by this object.
    void* handle() const noexcept { return handle_; }

private:
    void* handle_;
};

}  // namespace common
