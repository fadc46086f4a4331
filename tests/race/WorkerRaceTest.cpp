// The TCP worker alone, with senders on threads of their own.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>

#include "client/ClientCommands.h"
#include "Crowd.h"
#include "QorPeer.h"
#include "transport/ClientSocketCommandFactory.h"
#include "Way.h"

namespace {

const char* const qorName = "qor of the worker";

/// Fails in a way that nobody expects, with the first data that QOR sends.
class FailingReceiver final : public ICommandReceiver {
public:
    FailingReceiver() { prototypes_.push_back(std::make_unique<ClientCommandGetParamInfo>()); }

    const Prototypes& prototypes() const override { return prototypes_; }
    bool handleCommand(IExternalCommand&, IExternalCommand::ICommandReplyer&) override {
        ++calls_;
        throw std::runtime_error("no handler of ours throws this");
    }
    void onNewQor() override {}
    int calls() const { return calls_; }

private:
    Prototypes prototypes_;
    std::atomic<int> calls_{0};
};

TEST(WorkerRace, SendersOutliveAWorkerThatAHandlerHasEnded) {
    const QorPeer qor(makeEnd(Way::tcp, qorName));
    for (int round = 0; round < 5; ++round) {
        FailingReceiver receiver;
        ClientSocketCommandFactory transport(qorName, qorPort, receiver);
        transport.start();
        Crowd crowd;
        crowd.add(4, [&](int) {
            for (int i = 0; i < 200; ++i)
                transport.send(std::make_unique<CommandGetParamInfo>(), 1);
        });
        crowd.join();
        EXPECT_EQ(receiver.calls(), 1);
    }
}

}  // namespace
