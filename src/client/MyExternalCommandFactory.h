#pragma once

#include "client/ClientSettings.h"
#include "transport/ExternalCommandFactory.h"

/// The window-message transport that the settings describe.
class MyExternalCommandFactory final : public ExternalCommandFactory {
public:
    MyExternalCommandFactory(const ClientSettings& settings, ICommandReceiver& receiver)
        : ExternalCommandFactory(settings.clientPipeName, settings.serverPipeName, receiver) {}
};
