#pragma once

#include <winsock2.h>

#include <windows.h>

/// The part of the framework's asynchronous sockets that the transport needs, on plain Winsock,
/// under the framework's own names: a build that has the framework includes its header instead.
///
/// A socket belongs to the thread that called `Create`: its notifications arrive there, as window
/// messages, whenever that thread dispatches `socketNotifyMessage`. An object is used by that
/// thread alone.
class CAsyncSocket {
public:
    CAsyncSocket() = default;
    /// Closes the socket.
    virtual ~CAsyncSocket();
    CAsyncSocket(const CAsyncSocket&) = delete;
    CAsyncSocket& operator=(const CAsyncSocket&) = delete;

    /// Makes the socket, bound to `socketPort` (0: any) of `socketAddress` (null: any), and asks
    /// for the notifications in `events`. On failure `GetLastError` tells why.
    BOOL Create(UINT socketPort = 0, int socketType = SOCK_STREAM,
                long events = FD_READ | FD_WRITE | FD_OOB | FD_ACCEPT | FD_CONNECT | FD_CLOSE,
                const char* socketAddress = nullptr);

    /// Starts to connect; nearly always FALSE with the would-block error, the outcome then comes
    /// as OnConnect. A host name is looked up first, which blocks.
    BOOL Connect(const char* hostAddress, UINT hostPort);

    BOOL SetSockOpt(int optionName, const void* optionValue, int optionLength,
                    int level = SOL_SOCKET);

    /// The calling thread's last socket error.
    static int GetLastError() { return WSAGetLastError(); }

    /// Notifications still queued for the closed socket are dropped: the system soon gives its
    /// handle value to the next one.
    virtual void Close();
    virtual int Receive(void* buffer, int length, int flags = 0);
    virtual int Send(const void* buffer, int length, int flags = 0);

    SOCKET m_hSocket = INVALID_SOCKET;

protected:
    virtual void OnReceive(int) {}
    virtual void OnSend(int) {}
    // QOR sends no urgent data and the library never listens: the framework's slots all the same.
    virtual void OnOutOfBandData(int) {}
    virtual void OnAccept(int) {}
    virtual void OnConnect(int) {}
    virtual void OnClose(int) {}

private:
    friend class SocketWindow;

    BOOL bindTo(UINT port, const char* address);
    void notify(int event, int errorCode);
};

/// The window messages that carry socket notifications: of live sockets, and of closed ones. The
/// second is never sent here, only by the framework; pumps take both so as to serve either.
constexpr UINT socketNotifyMessage = 0x0373;
constexpr UINT socketDeadMessage = 0x0374;

/// Starts the socket support of the process; each success needs one `AfxSocketTerm`.
BOOL AfxSocketInit(WSADATA* data = nullptr);
void AfxSocketTerm();
