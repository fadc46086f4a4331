#pragma once

#include <winsock2.h>

#include <windows.h>

#include <map>

class CAsyncSocket;

/// The hidden window through which the notifications of one thread's sockets arrive. It lives
/// from the first attached socket of the thread to the last, so messages of a closed lone socket
/// vanish with it.
class SocketWindow {
public:
    /// Directs the notifications in `events` to the calling thread. False if the window or the
    /// request fails; the socket error then tells why.
    static bool attach(CAsyncSocket& socket, long events);

    /// Ends the notifications of an attached socket and drops those that are still queued.
    static void detach(SOCKET socket);

private:
    SocketWindow();
    ~SocketWindow();
    SocketWindow(const SocketWindow&) = delete;
    SocketWindow& operator=(const SocketWindow&) = delete;

    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    bool request(SOCKET socket, long events) const;
    static void dropQueuedOf(SOCKET socket, HWND window);
    static void deleteIfUnused();

    HWND window_ = nullptr;
    std::map<SOCKET, CAsyncSocket*> sockets_;
};
