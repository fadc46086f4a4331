#include "client/MyExternalCommandFactory.h"

#include "transport/ReceivedCommand.h"

bool MyExternalCommandFactory::handleCommand(IExternalCommand& command,
                                             IExternalCommand::ICommandReplyer& replyer) {
    return dispatch(command, replyer, &client_);
}
