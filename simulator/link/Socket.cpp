#include "link/Socket.h"

#include <windows.h>

#include <stdexcept>

namespace simulator {

SocketLibrary::SocketLibrary() {
    WSADATA data;
    const int code = WSAStartup(MAKEWORD(2, 2), &data);
    if (code != 0) throw std::runtime_error("Windows Sockets: error " + std::to_string(code));
}

std::string socketError(const std::string& what) {
    const auto code = static_cast<DWORD>(WSAGetLastError());
    char text[512] = "";
    FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                   text, sizeof text, nullptr);
    // Wine has no text for the one that matters most.
    const char* fallback = code == WSAEADDRINUSE ? "the address is in use" : "error";
    std::string message = text[0] == '\0' ? fallback : text;
    while (!message.empty() && (message.back() == '\n' || message.back() == '\r')) {
        message.pop_back();
    }
    return what + ": " + message + " (" + std::to_string(code) + ")";
}

}  // namespace simulator
