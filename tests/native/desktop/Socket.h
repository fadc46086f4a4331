#pragma once

#include <winsock2.h>

#include <memory>
#include <mutex>
#include <string>

#include "Link.h"

namespace desktop {

/// One socket: its end of a link, and what it has still to tell its window. Told are, as the system
/// does it: that an attempt has ended; that bytes are there, once again behind each receive that
/// leaves some; that it takes bytes, once behind a connect and behind each send that found no room;
/// that the other side has closed, behind its last byte.
class Socket : public std::enable_shared_from_this<Socket> {
public:
    void select(HWND window, UINT message, long events);
    void connect(const std::string& name);
    void close();

    /// So many bytes, or the negative of an error.
    int receive(char* buffer, int length);
    int send(const char* buffer, int length);

private:
    std::shared_ptr<Link> link() const;
    void tellNews();
    void tell(long event, int error = 0);

    mutable std::mutex mutex_;  // not held while a stream is changed, which calls back
    std::shared_ptr<Link> link_;
    HWND window_ = nullptr;  // null: nobody is told anything
    UINT message_ = 0;
    long events_ = 0;
    bool isConnecting_ = false;
    bool isConnected_ = false;
    bool readTold_ = false;
    bool closeTold_ = false;
    bool wantsToSend_ = false;
};

}  // namespace desktop
