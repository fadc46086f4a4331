#pragma once

#include <atomic>

#include "common/Thread.h"
#include "Process.h"
#include "Samples.h"

/// The floor of a pushed value over TCP: 24 bytes from another process into an asynchronous socket
/// with its message pump, and 16 bytes back. The other side is the streams' own and keeps `window`
/// values on their way. No protocol, no ids, no hand-over.
class AckFloor {
public:
    explicit AckFloor(int window);
    ~AckFloor();
    AckFloor(const AckFloor&) = delete;
    AckFloor& operator=(const AckFloor&) = delete;

    /// Acknowledges values for so long and adds the time of one, several times.
    void measureFor(unsigned int ms, Samples& perValue);

private:
    class AckSocket;

    static unsigned __stdcall run(void* floor);

    const unsigned int port_;
    Process peer_;
    std::atomic<bool> works_{false};
    std::atomic<bool> stop_{false};
    std::atomic<int> acknowledged_{0};
    common::Thread worker_;
};
