#pragma once

#include <windows.h>

#include <memory>

#include "WinsockNumbers.h"

/// The framework's asynchronous sockets on the network of the simulated machine (Network.h), as far
/// as the transport's own sources use them.
using UINT = unsigned int;

namespace simtime {
class Line;
}

class CAsyncSocket {
public:
    CAsyncSocket();
    virtual ~CAsyncSocket();
    CAsyncSocket(const CAsyncSocket&) = delete;
    CAsyncSocket& operator=(const CAsyncSocket&) = delete;

    BOOL Create(UINT socketPort = 0, int socketType = SOCK_STREAM);
    BOOL Connect(const char* hostAddress, UINT hostPort);
    BOOL SetSockOpt(int optionName, const void* optionValue, int optionLength,
                    int level = SOL_SOCKET);
    static int GetLastError();

    virtual void Close();
    virtual int Receive(void* buffer, int length, int flags = 0);
    virtual int Send(const void* buffer, int length, int flags = 0);

    /// Hands out at most one notification; false if there was none.
    bool dispatchOne();
    /// The one of the calling thread; null if it has none.
    static CAsyncSocket* ofThisThread();
    bool hasNotification() const;

    SOCKET m_hSocket = INVALID_SOCKET;

protected:
    virtual void OnReceive(int) {}
    virtual void OnSend(int) {}
    virtual void OnConnect(int) {}
    virtual void OnClose(int) {}

private:
    int fail(int error) const;

    std::shared_ptr<simtime::Line> line_;
};

/// The support of sockets is always there.
inline BOOL AfxSocketInit() {
    return TRUE;
}
inline void AfxSocketTerm() {}
