#include "RawTcp.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

#include "EchoPeer.h"

namespace {

/// Port 0: any that is free.
sockaddr_in onThisMachine(int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<in_port_t>(port));
    return address;
}

bool sendAll(int socket, const char* bytes) {
    return send(socket, bytes, echoBytes, MSG_NOSIGNAL) == echoBytes;
}

bool receiveAll(int socket, char* bytes) {
    return recv(socket, bytes, echoBytes, MSG_WAITALL) == echoBytes;
}

void echo(const Server::Tell& tell) {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = onThisMachine(0);
    socklen_t length = sizeof address;
    const auto name = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener, name, length) != 0 || listen(listener, 1) != 0 ||
        getsockname(listener, name, &length) != 0)
        throw std::runtime_error("no port can be had");
    tell(std::to_string(ntohs(address.sin_port)));
    const int peer = accept(listener, nullptr, nullptr);
    char bytes[echoBytes];
    while (receiveAll(peer, bytes) && sendAll(peer, bytes)) {
    }
}

int connectTo(const std::string& port) {
    const int connection = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = onThisMachine(std::stoi("0" + port));
    if (connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return connection;
    close(connection);
    throw std::runtime_error("the server of the floor does not listen");
}

}  // namespace

RawTcp::RawTcp() : server_(echo), socket_(connectTo(server_.place())) {}

RawTcp::~RawTcp() {
    close(socket_);
}

void RawTcp::roundTrip() {
    char bytes[echoBytes] = {};
    if (!sendAll(socket_, bytes) || !receiveAll(socket_, bytes))
        throw std::runtime_error("the server of the floor has gone");
}
