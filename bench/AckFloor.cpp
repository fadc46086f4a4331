#include "AckFloor.h"

#include <cstring>
#include <stdexcept>
#include <string>

#include "BarePeer.h"
#include "FloorSocket.h"

namespace {

constexpr int requestIdAt = 4;
constexpr int requestIdBytes = 4;
constexpr unsigned int giveUpMs = 5000;
constexpr unsigned int slices = 10;

}  // namespace

class AckFloor::AckSocket final : public FloorSocket {
public:
    explicit AckSocket(std::atomic<int>& acknowledged) : acknowledged_(acknowledged) {}

protected:
    void OnReceive(int) override {
        char bytes[16384];
        std::memcpy(bytes, rest_, static_cast<std::size_t>(restBytes_));
        const int room = static_cast<int>(sizeof bytes) - restBytes_;
        const int received = Receive(bytes + restBytes_, room);
        if (received <= 0) return;
        int at = 0;
        const int end = restBytes_ + received;
        for (; at + barepeer::valueBytes <= end; at += barepeer::valueBytes)
            acknowledge(bytes + at);
        restBytes_ = end - at;
        std::memcpy(rest_, bytes + at, static_cast<std::size_t>(restBytes_));
    }

private:
    void acknowledge(const char* value) {
        // A ping's answer, stamped with the value's request id.
        char answer[barepeer::acknowledgementBytes] = {0, 0, 1, 0, 0, 0, 0, 0, 4, 0, 0, 0, 1};
        std::memcpy(answer + requestIdAt, value + requestIdAt, requestIdBytes);
        Send(answer, sizeof answer);
        ++acknowledged_;
    }

    char rest_[barepeer::valueBytes] = {};
    int restBytes_ = 0;
    std::atomic<int>& acknowledged_;
};

AckFloor::AckFloor(int window)
    : port_(freePort()),
      peer_("qor-bench.exe",
            "--bare-peer " + std::to_string(port_) + " --bare-window " + std::to_string(window)) {
    worker_.start(run, this);
}

AckFloor::~AckFloor() {
    stop_ = true;
    while (worker_.isRunning()) common::sleepMs(1);
}

unsigned __stdcall AckFloor::run(void* floor) {
    auto& self = *static_cast<AckFloor*>(floor);
    const auto socket =
        connectFloor(self.port_, [&] { return std::make_unique<AckSocket>(self.acknowledged_); });
    while (socket && !self.stop_) {
        if (self.works_)
            pumpSocketNotifications(nullptr);
        else
            common::sleepMs(1);
    }
    return 0;
}

void AckFloor::measureFor(unsigned int ms, Samples& perValue) {
    works_ = true;
    const auto deadline = common::Deadline::after(common::now(), giveUpMs);
    for (const int before = acknowledged_; acknowledged_ == before; common::sleepMs(1))
        if (deadline.hasPassed()) throw std::runtime_error("the peer of the streams sends nothing");
    for (unsigned int slice = 0; slice < slices; ++slice) {
        const int before = acknowledged_;
        const double startUs = nowUs();
        common::sleepMs(ms / slices);
        const int count = acknowledged_ - before;
        if (count > 0) perValue.add((nowUs() - startUs) / count);
    }
    works_ = false;
}
