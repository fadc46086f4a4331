#pragma once

#include "client/ClientExternalOperating.h"
#include "transport/ExternalCommandFactory.h"

/// The client's window-message transport: received commands go to the client's prototypes and
/// handlers.
class MyExternalCommandFactory final : public ExternalCommandFactory {
public:
    MyExternalCommandFactory(const std::string& clientWindowName,
                             const std::string& serverWindowName, ClientExternalOperating& client)
        : ExternalCommandFactory(clientWindowName, serverWindowName,
                                 std::make_unique<WindowPlatform>()),
          client_(client) {}

    const Prototypes& prototypes() const override { return client_.prototypes(); }

    bool handleCommand(IExternalCommand& command,
                       IExternalCommand::ICommandReplyer& replyer) override;

    void onNewQor() override { client_.onNewQor(); }

private:
    ClientExternalOperating& client_;
};
