#include "client/MySocketCommandFactory.h"

#include "transport/ReceivedCommand.h"

bool MySocketCommandFactory::handleCommand(IExternalCommand& command,
                                           IExternalCommand::ICommandReplyer& replyer) {
    return dispatch(command, replyer, &client_);
}
