#include "framework/SocketWindow.h"

#include "framework/Application.h"
#include "framework/AsyncSocket.h"
#include "framework/WindowClasses.h"

namespace {

const char* const className = "QorSocketWindow";

// A plain pointer, so that nothing has to run when a thread ends: the window goes with the
// thread's last socket.
thread_local SocketWindow* threadWindow = nullptr;

}  // namespace

SocketWindow::SocketWindow() {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = AfxThisModule();
    if (moduleClasses().add(windowClass, className) == nullptr) return;
    window_ = CreateWindowExA(0, className, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                              windowClass.hInstance, nullptr);
}

SocketWindow::~SocketWindow() {
    if (window_ != nullptr) DestroyWindow(window_);
}

bool SocketWindow::attach(CAsyncSocket& socket, long events) {
    if (threadWindow == nullptr) threadWindow = new SocketWindow;
    if (!threadWindow->request(socket.m_hSocket, events)) {
        const int error = WSAGetLastError();
        deleteIfUnused();
        WSASetLastError(error);
        return false;
    }
    threadWindow->sockets_[socket.m_hSocket] = &socket;
    return true;
}

bool SocketWindow::request(SOCKET socket, long events) const {
    if (window_ == nullptr) {  // some systems would accept even that, and notify nobody
        WSASetLastError(WSAEINVAL);
        return false;
    }
    return WSAAsyncSelect(socket, window_, socketNotifyMessage, events) == 0;
}

void SocketWindow::detach(SOCKET socket) {
    if (threadWindow == nullptr || threadWindow->sockets_.erase(socket) == 0) return;
    WSAAsyncSelect(socket, threadWindow->window_, 0, 0);
    dropQueuedOf(socket, threadWindow->window_);
    deleteIfUnused();
}

void SocketWindow::deleteIfUnused() {
    if (threadWindow == nullptr || !threadWindow->sockets_.empty()) return;
    delete threadWindow;
    threadWindow = nullptr;
}

void SocketWindow::dropQueuedOf(SOCKET socket, HWND window) {
    // Dispatching for another socket may close that one, too, and so end the window in here.
    MSG message;
    while (PeekMessageA(&message, window, socketNotifyMessage, socketDeadMessage, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        if (message.wParam != socket) DispatchMessageA(&message);
    }
}

LRESULT CALLBACK SocketWindow::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != socketNotifyMessage) return DefWindowProcA(window, message, wParam, lParam);
    if (threadWindow == nullptr) return 0;
    const auto entry = threadWindow->sockets_.find(wParam);
    if (entry != threadWindow->sockets_.end())
        entry->second->notify(WSAGETSELECTEVENT(lParam), WSAGETSELECTERROR(lParam));
    return 0;
}
