#pragma once

#include "client/ClientExternalOperating.h"
#include "transport/ClientSocketCommandFactory.h"

/// The client's TCP transport: received commands go to the client's prototypes and handlers.
class MySocketCommandFactory final : public ClientSocketCommandFactory {
public:
    MySocketCommandFactory(const std::string& serverIp, unsigned int port,
                           ClientExternalOperating& client)
        : ClientSocketCommandFactory(serverIp, port), client_(client) {}
    ~MySocketCommandFactory() override { stopWorker(); }

    void start() override { startWorker(); }
    bool stop() override { return stopWorker(); }

    const Prototypes& prototypes() const override { return client_.prototypes(); }

    bool handleCommand(IExternalCommand& command,
                       IExternalCommand::ICommandReplyer& replyer) override;

    void onNewQor() override { client_.onNewQor(); }

private:
    ClientExternalOperating& client_;
};
