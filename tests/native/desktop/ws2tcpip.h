#pragma once

#include <winsock2.h>

#include <cstddef>

constexpr int AI_PASSIVE = 1;
struct addrinfo {
    int ai_flags;
    int ai_family;
    int ai_socktype;
    std::size_t ai_addrlen;
    sockaddr* ai_addr;
};

int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** list);
void freeaddrinfo(addrinfo* list);
