#pragma once

#include <exception>
#include <functional>
#include <thread>

#include "support/TcpPeer.h"

namespace tcp {

/// A peer that plays a script on a thread of its own while the test does something that blocks.
class TcpPeerThread {
public:
    /// `peer` must outlive the thread and is the script's alone until `join`.
    TcpPeerThread(TcpPeer& peer, std::function<void(TcpPeer&)> script)
        : thread_([this, &peer, script] {
              try {
                  script(peer);
              } catch (...) {
                  failure_ = std::current_exception();
              }
          }) {}
    ~TcpPeerThread() {
        if (thread_.joinable()) thread_.join();
    }
    TcpPeerThread(const TcpPeerThread&) = delete;
    TcpPeerThread& operator=(const TcpPeerThread&) = delete;

    /// Waits for the end of the script; throws what the script threw.
    void join() {
        thread_.join();
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    std::exception_ptr failure_;
    std::thread thread_;
};

}  // namespace tcp
