#include "StreamPeer.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "Accept.h"
#include "Samples.h"
#include "wire/Payloads.h"
#include "wire/RecordStream.h"

namespace streampeer {

namespace {

using simulator::CommandId;
using simulator::ConnectPayload;
using simulator::DirectCtrlPayload;
using simulator::ParamDataPayload;
using simulator::ParamInfoPayload;
using simulator::PingPayload;
using simulator::Record;

constexpr int pushIndex = 100;
constexpr int acknowledgedIndex = 101;
constexpr int firstReadOnly = 200;
/// Request ids of pushed values; all others of this peer have 0.
constexpr std::uint32_t valueId = 0x40000000;

int indexOf(const std::string& name) {
    if (name == push) return pushIndex;
    if (name == acknowledged) return acknowledgedIndex;
    const int number = std::atoi(name.c_str() + 1);
    return name[0] == 'V' ? number : firstReadOnly + number;
}

/// When to push how many values.
struct Plan {
    int window = 0;
    int burst = 0;
    double periodUs = 0;
    double nextUs = 0;

    /// How many are due now.
    int take(int unacknowledged) {
        if (window > 0) return std::max(window - unacknowledged, 0);
        if (periodUs <= 0 || nowUs() < nextUs) return 0;
        nextUs = std::max(nextUs + periodUs, nowUs() - periodUs);
        return burst;
    }
    /// How long there is nothing to push unless something is received.
    timeval idle() const {
        const bool paced = window == 0 && periodUs > 0;
        const double us = paced ? std::max(nextUs - nowUs(), 0.0) : 1e6;
        return {static_cast<long>(us / 1e6), static_cast<long>(us) % 1000000};
    }
};

class Peer {
public:
    Peer(SOCKET socket, int window) : socket_(socket) {
        // Every value leaves at once.
        const BOOL on = TRUE;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
        plan_.window = window;
    }

    void run() {
        do pushDue();
        while (receive());
    }

private:
    void pushDue() {
        for (int due = plan_.take(unacknowledged_); due > 0; --due) {
            const std::string payload = ParamDataPayload{next_, nowUs()}.write();
            send({CommandId::ReceiveParamData, false, valueId, payload});
            next_ = (next_ + 1) % streamed;
            ++unacknowledged_;
        }
    }

    /// False when the connection has ended.
    bool receive() {
        fd_set sockets;
        FD_ZERO(&sockets);
        FD_SET(socket_, &sockets);
        timeval idle = plan_.idle();
        if (select(0, &sockets, nullptr, nullptr, &idle) != 1) return true;
        char bytes[16384];
        const int count = recv(socket_, bytes, sizeof bytes, 0);
        if (count <= 0) return false;
        stream_.append(std::string_view(bytes, static_cast<std::size_t>(count)));
        while (const auto record = stream_.next()) handle(*record);
        return true;
    }

    void handle(const Record& record) {
        if (record.isReply) return countReply(record);
        switch (record.id) {
            case CommandId::KwpConnect:
                acknowledge(record);
                if (ConnectPayload::read(record.payload).mode == ConnectPayload::Query)
                    send({CommandId::ReceiveParamData, false, 0,
                          ParamDataPayload{ParamDataPayload::Online, 1.0}.write()});
                return;
            case CommandId::GetParamInfo:
                return describe(record);
            case CommandId::DirectCtrl:
                return control(record);
            default:
                acknowledge(record);
        }
    }

    void countReply(const Record& record) {
        if (record.requestId != valueId) return;
        --unacknowledged_;
        ++acknowledgedValues_;
    }

    void describe(const Record& record) {
        ParamInfoPayload info = ParamInfoPayload::read(record.payload);
        info.index = indexOf(info.name);
        info.threeArrays = false;
        answer(record, info.write());
    }

    void control(const Record& record) {
        DirectCtrlPayload control = DirectCtrlPayload::read(record.payload);
        const bool isRead = control.operation == DirectCtrlPayload::Read;
        if (control.index == pushIndex && !isRead) startPlan(control.values);
        if (!isRead) return acknowledge(record);
        control.values = {static_cast<double>(acknowledgedValues_), nowUs()};
        answer(record, control.write());
    }

    void startPlan(const std::vector<double>& values) {
        plan_.window = static_cast<int>(values.at(0));
        plan_.burst = static_cast<int>(values.at(1));
        plan_.periodUs = values.at(2);
        plan_.nextUs = nowUs();
    }

    void acknowledge(const Record& record) {
        send({CommandId::Ping, true, record.requestId, PingPayload{PingPayload::Handled}.write()});
    }
    void answer(const Record& record, const std::string& payload) {
        send({record.id, true, record.requestId, payload});
    }
    void send(const Record& record) {
        const std::string bytes = record.bytes();
        ::send(socket_, bytes.data(), static_cast<int>(bytes.size()), 0);
    }

    const SOCKET socket_;
    simulator::RecordStream stream_;
    Plan plan_;
    int next_ = 0;
    int unacknowledged_ = 0;
    int acknowledgedValues_ = 0;
};

}  // namespace

int run(unsigned int port, int window) {
    const SOCKET socket = acceptOne(port);
    if (socket == INVALID_SOCKET) return 1;
    Peer(socket, window).run();
    closesocket(socket);
    return 0;
}

}  // namespace streampeer
