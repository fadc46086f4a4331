#pragma once

#include <vector>

/// What this program, and with it the library, calls of the system on the way of a request: each
/// call with its thread and its times. (The time of the record itself, about 0.2 microseconds for
/// each call, is in the figures.)
namespace profile {

/// What a call of the system is for, as far as a request's way goes.
enum class Role {
    plain,
    signal,    ///< sets an event: whoever waits for that one goes on
    wait,      ///< ends by an event, a message or the time
    sendOut,   ///< bytes leave over the socket
    exchange,  ///< a window message and its result
    look       ///< for messages; those that others sent are handled inside of it
};

/// How a wait has ended.
enum class Wake { none, event, message, timer, atOnce };

struct Call {
    const char* function = "";
    Role role = Role::plain;
    unsigned int thread = 0;
    double startUs = 0;
    double endUs = 0;
    void* object = nullptr;  ///< the event
    Wake wake = Wake::none;
    bool isInside = false;  ///< of another call of the same thread

    double us() const { return endUs - startUs; }
};

/// As long as it lives the calls of this program's import table are replaced by ones that can be
/// recorded. One at a time.
class Recorder {
public:
    Recorder();
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    void start();
    /// What was called since `start`, by its end.
    std::vector<Call> stop();

private:
    struct Place {
        void** address;
        void* before;
    };

    std::vector<Place> places_;
};

}  // namespace profile
