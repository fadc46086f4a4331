#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "framework/AsyncSocket.h"
#include "support/TcpPeer.h"

/// Dispatches all messages of the calling thread until `isDone`; false if that takes too long.
inline bool pumpUntil(const std::function<bool()>& isDone, DWORD withinMs = 5000) {
    const DWORD start = GetTickCount();
    for (;;) {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
        if (isDone()) return true;
        if (GetTickCount() - start > withinMs) return false;
        MsgWaitForMultipleObjectsEx(0, nullptr, 5, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
}

inline void pumpFor(DWORD ms) {
    pumpUntil([] { return false; }, ms);
}

/// Writes down what it is notified of, and on which thread.
class RecordingSocket : public CAsyncSocket {
public:
    using Reaction = std::function<void()>;

    std::vector<int> connects;  // the error codes
    std::vector<int> closes;
    unsigned sends = 0;
    std::string received;
    std::vector<DWORD> threads;
    Reaction onClose = [] {};

protected:
    void OnConnect(int errorCode) override {
        note();
        connects.push_back(errorCode);
    }
    void OnReceive(int) override {
        note();
        char chunk[1000];
        const int count = Receive(chunk, sizeof chunk);
        if (count > 0) received.append(chunk, static_cast<std::size_t>(count));
    }
    void OnSend(int) override {
        note();
        ++sends;
    }
    void OnClose(int errorCode) override {
        note();
        closes.push_back(errorCode);
        const Reaction reaction = onClose;  // may delete this object
        reaction();
    }

private:
    void note() { threads.push_back(GetCurrentThreadId()); }
};

/// Connects to the listening peer, both sides done.
inline bool connectTo(tcp::TcpPeer& peer, RecordingSocket& socket) {
    if (!socket.Create()) return false;
    if (!socket.Connect("127.0.0.1", peer.port()) && CAsyncSocket::GetLastError() != WSAEWOULDBLOCK)
        return false;
    peer.accept();
    return pumpUntil([&] { return !socket.connects.empty(); }) && socket.connects.back() == 0;
}
