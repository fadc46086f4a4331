#include "DesignFloor.h"

#include <stdexcept>
#include <string>

#include "common/Deadline.h"
#include "EchoPeer.h"
#include "FloorSocket.h"

namespace {

constexpr unsigned int giveUpMs = 5000;

/// Reports each whole message to the results.
class EchoSocket final : public FloorSocket {
public:
    explicit EchoSocket(ThreadSafeQueue<int>& results) : results_(results) {}

protected:
    void OnReceive(int) override {
        char bytes[echoBytes];
        const int received = Receive(bytes, sizeof bytes);
        if (received > 0) got_ += received;
        if (got_ < echoBytes) return;
        got_ -= echoBytes;
        results_.push(1);
    }

private:
    ThreadSafeQueue<int>& results_;
    int got_ = 0;
};

/// Takes the next item, however long it takes; throws if it does not come at all.
void await(ThreadSafeQueue<int>& queue) {
    const auto deadline = common::Deadline::after(common::now(), giveUpMs);
    int item = 0;
    while (!queue.pop(item, 1))
        if (deadline.hasPassed())
            throw std::runtime_error("no answer from the other side of a floor");
}

}  // namespace

DesignFloor::DesignFloor()
    : outgoing(10),
      results(1),
      port_(freePort()),
      peer_("qor-bench.exe", "--echo-peer " + std::to_string(port_)) {
    worker_.start(run, this);
}

DesignFloor::~DesignFloor() {
    stop_ = true;
    while (worker_.isRunning()) common::sleepMs(1);
}

unsigned __stdcall DesignFloor::run(void* floor) {
    auto& self = *static_cast<DesignFloor*>(floor);
    const auto socket =
        connectFloor(self.port_, [&] { return std::make_unique<EchoSocket>(self.results); });
    if (!socket) return 1;
    const char message[echoBytes] = {};
    while (!self.stop_) {
        int item = 0;
        if (self.outgoing.pop(item, 0)) socket->Send(message, sizeof message);
        pumpSocketNotifications(&self.outgoing.pushed());
    }
    return 0;
}

void DesignFloor::roundTrip() {
    outgoing.push(1);
    await(results);
}

ThreadHop::ThreadHop() : requests_(10), answers_(1) {
    worker_.start(run, this);
}

ThreadHop::~ThreadHop() {
    stop_ = true;
    while (worker_.isRunning()) common::sleepMs(1);
}

unsigned __stdcall ThreadHop::run(void* hop) {
    auto& self = *static_cast<ThreadHop*>(hop);
    while (!self.stop_) {
        int item = 0;
        if (self.requests_.pop(item, 1)) self.answers_.push(item);
    }
    return 0;
}

void ThreadHop::roundTrip() {
    requests_.push(1);
    await(answers_);
}
