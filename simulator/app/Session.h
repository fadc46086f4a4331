#pragma once

#include <cstdint>

namespace simulator {

/// Carries the records of a conversation over one kind of link. Used by one thread.
class Session {
public:
    virtual ~Session() = default;

    /// Waits until something has come or the time is over, and handles what has come.
    virtual void serve(std::uint32_t timeoutMs) = 0;
    virtual void sendWhatIsDue() = 0;
    virtual bool hasClient() const = 0;
    /// The process is about to end; in order = what is due still goes out.
    virtual void end(bool inOrder) = 0;
};

}  // namespace simulator
