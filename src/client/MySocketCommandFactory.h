#pragma once

#include "client/ClientSettings.h"
#include "transport/ClientSocketCommandFactory.h"

/// The TCP transport that the settings describe.
class MySocketCommandFactory final : public ClientSocketCommandFactory {
public:
    MySocketCommandFactory(const ClientSettings& settings, ICommandReceiver& receiver)
        : ClientSocketCommandFactory(settings.serverIp, settings.tcpPort, receiver) {}
};
