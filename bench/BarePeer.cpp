#include "BarePeer.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "Accept.h"
#include "link/Messages.h"
#include "link/WindowLink.h"
#include "PeerConversation.h"
#include "wire/Payloads.h"
#include "wire/RecordStream.h"

namespace barepeer {

namespace {

using simulator::CommandId;
using simulator::MessageForm;
using simulator::PingPayload;
using simulator::Record;
using simulator::WindowLink;

constexpr std::uint32_t sendMs = 2000;
constexpr double longestWaitMs = 200;

class TcpWay final : public Way {
public:
    explicit TcpWay(SOCKET socket) : socket_(socket) {
        // Every value leaves at once.
        const BOOL on = TRUE;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
    }

    bool send(const Record& record) override {
        const std::string bytes = record.bytes();
        ::send(socket_, bytes.data(), static_cast<int>(bytes.size()), 0);
        return false;
    }
    void acknowledge(const Record& request) override {
        send({CommandId::Ping, true, request.requestId, PingPayload{PingPayload::Handled}.write()});
    }

    /// False when the connection has ended.
    bool receive(Conversation& conversation) {
        fd_set sockets;
        FD_ZERO(&sockets);
        FD_SET(socket_, &sockets);
        const double us = conversation.idleUs();
        timeval idle = {static_cast<long>(us / 1e6), static_cast<long>(us) % 1000000};
        if (select(0, &sockets, nullptr, nullptr, &idle) != 1) return true;
        char bytes[16384];
        const int count = recv(socket_, bytes, sizeof bytes, 0);
        if (count <= 0) return false;
        stream_.append(std::string_view(bytes, static_cast<std::size_t>(count)));
        while (const auto record = stream_.next()) conversation.handle(*record);
        return true;
    }

private:
    const SOCKET socket_;
    simulator::RecordStream stream_;
};

/// The result of a message is its acknowledgement, in both directions.
class WindowWay final : public Way, public simulator::WindowLinkEvents {
public:
    WindowWay(const std::string& ownTitle, std::string hostTitle)
        : hostTitle_(std::move(hostTitle)), link_(ownTitle, *this) {}

    bool send(const Record& record) override {
        return WindowLink::send(host_, record.bytes(), {}, sendMs).result != 0;
    }
    void acknowledge(const Record&) override {}

    // Data may only follow when the host waits for the result no more.
    bool onMessage(const std::string& bytes, const MessageForm&) override {
        if (IsWindow(host_) == FALSE) host_ = WindowLink::find(hostTitle_);
        simulator::RecordStream stream;
        stream.append(bytes);
        WindowLink::releaseSender(true);
        if (const auto record = stream.next()) conversation_.handle(*record);
        return true;
    }

    void run() {
        do {
            conversation_.pushDue();
            const double ms = std::min(std::ceil(conversation_.idleUs() / 1e3), longestWaitMs);
            simulator::waitForEventOrMessage(nullptr, static_cast<std::uint32_t>(ms));
            simulator::handleMessages();
        } while (host_ == nullptr || IsWindow(host_) != FALSE);
    }

private:
    Conversation conversation_{*this, 0};
    const std::string hostTitle_;
    HWND host_ = nullptr;
    WindowLink link_;
};

}  // namespace

int run(unsigned int port, int window) {
    const SOCKET socket = acceptOne(port);
    if (socket == INVALID_SOCKET) return 1;
    TcpWay way(socket);
    Conversation conversation(way, window);
    do conversation.pushDue();
    while (way.receive(conversation));
    closesocket(socket);
    return 0;
}

int runWindow(const std::string& ownTitle, const std::string& hostTitle) {
    WindowWay(ownTitle, hostTitle).run();
    return 0;
}

}  // namespace barepeer
