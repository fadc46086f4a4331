#pragma once

#include <atomic>

#include "common/Thread.h"
#include "Process.h"
#include "qorcontrol/ThreadSafeQueue.h"

/// The floor of the transport's design: the same 32 bytes over the asynchronous socket with its
/// message pump, handed to that socket's thread and back by two queues. No protocol, no ids.
class DesignFloor {
public:
    DesignFloor();
    ~DesignFloor();
    DesignFloor(const DesignFloor&) = delete;
    DesignFloor& operator=(const DesignFloor&) = delete;

    void roundTrip();

    ThreadSafeQueue<int> outgoing;
    ThreadSafeQueue<int> results;

private:
    static unsigned __stdcall run(void* floor);

    const unsigned int port_;
    Process peer_;
    std::atomic<bool> stop_{false};
    common::Thread worker_;
};

/// One hand-over between two threads and back, over two queues.
class ThreadHop {
public:
    ThreadHop();
    ~ThreadHop();
    ThreadHop(const ThreadHop&) = delete;
    ThreadHop& operator=(const ThreadHop&) = delete;

    void roundTrip();

private:
    static unsigned __stdcall run(void* hop);

    ThreadSafeQueue<int> requests_;
    ThreadSafeQueue<int> answers_;
    std::atomic<bool> stop_{false};
    common::Thread worker_;
};
