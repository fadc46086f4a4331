#pragma once

#include <optional>

#include "client/ClientState.h"
#include "protocol/Commands.h"
#include "protocol/IClientCommand.h"

/// The commands whose answers the client acts on. Each is its command class with a handler; the
/// handlers hand what they received over to the client, which may take it out of the command. This
/// is the one place where commands know the client.
namespace clientcommands {

/// Creation for a client command: records parsed by its prototype are client commands too.
template <class Self, class Command>
class ClientCommand : public Command, public IClientCommand {
public:
    using Command::Command;

    IExternalCommand* createFromPayload(std::string_view bytes) const override {
        return Command::template createAs<Self>(bytes);
    }

protected:
    Answered answered() const {
        return this->isReply() ? Answered(this->requestId()) : std::nullopt;
    }
};

}  // namespace clientcommands

#define QOR_DECLARE_CLIENT_COMMAND(Class, Command)                             \
    class Class final : public clientcommands::ClientCommand<Class, Command> { \
    public:                                                                    \
        using ClientCommand::ClientCommand;                                    \
        bool onReply(IExternalCommand::ICommandReplyer* replyer,               \
                     ClientExternalOperating* client) override;                \
    };

QOR_DECLARE_CLIENT_COMMAND(ClientCommandStartEdit, CommandStartEdit)
QOR_DECLARE_CLIENT_COMMAND(ClientCommandGetParamInfo, CommandGetParamInfo)
/// Also carries the reserved ids that report the state of a connect.
QOR_DECLARE_CLIENT_COMMAND(ClientCommandReceiveParamData, CommandReceiveParamData)
QOR_DECLARE_CLIENT_COMMAND(ClientCommandDirectCtrl, CommandDirectCtrl)
QOR_DECLARE_CLIENT_COMMAND(ClientCommandGetDTC, CommandGetDTC)
/// Shows a message box on QOR's behalf. QOR is released before the box opens; the choice goes back
/// as a request of its own, and is lost if QOR does not take it.
QOR_DECLARE_CLIENT_COMMAND(ClientCommandRedirectUI, CommandRedirectUI)
QOR_DECLARE_CLIENT_COMMAND(ClientCommandGetHex, CommandGetHex)
QOR_DECLARE_CLIENT_COMMAND(ClientCommandStaticParam, CommandStaticParam)
QOR_DECLARE_CLIENT_COMMAND(ClientCommandEcuSegment, CommandEcuSegment)
QOR_DECLARE_CLIENT_COMMAND(ClientCommandExecKwp, CommandExecKwp)
QOR_DECLARE_CLIENT_COMMAND(ClientCommandCanBusData, CommandCanBusData)
/// Hands the answer on as one record per parameter; false if values are missing.
QOR_DECLARE_CLIENT_COMMAND(ClientCommandReadTogether, CommandReadTogether)

#undef QOR_DECLARE_CLIENT_COMMAND
