#pragma once

#include <winsock2.h>

#include <windows.h>

#include "StationSettings.h"

/// A program that is not QOR, where the settings say that QOR is: this test.
class Stranger {
public:
    explicit Stranger(const StationSettings& settings) {
        WSAStartup(MAKEWORD(2, 2), &data_);
        socket_ = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(settings.port);
        bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        listen(socket_, 5);
        window_ = CreateWindowExA(0, "STATIC", (settings.titles + "-qor").c_str(), 0, 0, 0, 0, 0,
                                  nullptr, nullptr, nullptr, nullptr);
    }
    ~Stranger() {
        DestroyWindow(window_);
        closesocket(socket_);
        WSACleanup();
    }
    Stranger(const Stranger&) = delete;
    Stranger& operator=(const Stranger&) = delete;

private:
    WSADATA data_ = {};
    SOCKET socket_;
    HWND window_;
};
