#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "framework/Window.h"
#include "Process.h"

/// The raw thing of the window transport: 32 bytes in a copy-data message to another process, and
/// its result; or a copy-data message there and another one back.
class CopyDataFloor {
public:
    CopyDataFloor();
    ~CopyDataFloor();
    CopyDataFloor(const CopyDataFloor&) = delete;
    CopyDataFloor& operator=(const CopyDataFloor&) = delete;

    /// One message; the receiver's result comes back with it.
    void sendAndResult();
    /// The receiver releases the sender and then sends a message of its own.
    void thereAndBack();

private:
    class Receiver;

    void send(ULONG_PTR tag);

    const std::string title_;
    std::unique_ptr<Receiver> receiver_;
    std::unique_ptr<Process> peer_;
    HWND peerWindow_ = nullptr;
};

/// The other side: a process with a hidden window of that title, until it is told to quit.
/// Returns the exit code of the process.
int runCopyDataPeer(const std::string& title);
