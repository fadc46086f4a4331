#pragma once

#include "protocol/IExternalCommand.h"

class ClientExternalOperating;

/// What a command that the client sends does with its answer. A concrete client command derives
/// from its command class first and from this second; the two have no common base, so a transport
/// that has the one looks for the other with a dynamic cast.
class IClientCommand {
public:
    virtual ~IClientCommand() = default;

    /// Runs on the parsed answer, on the transport's receiving thread. False means "not handled".
    /// Neither argument may be kept.
    virtual bool onReply(IExternalCommand::ICommandReplyer* replyer,
                         ClientExternalOperating* client) = 0;

protected:
    IClientCommand() = default;
    IClientCommand(const IClientCommand&) = default;
    IClientCommand& operator=(const IClientCommand&) = default;
};
