#pragma once

#include <memory>
#include <string>

#include "protocol/Commands.h"
#include "transport/ICommandReceiver.h"

/// A record as a transport recognises it.
struct ReceivedCommand {
    std::unique_ptr<IExternalCommand> command;  ///< null: no prototype takes the record
    bool isPing = false;                        ///< taken by the ping prototype
    bool lacksMemory = false;                   ///< which is why there is no command
};

/// Offers `record` to the prototypes in their order, then to `ping`; the first that takes it wins.
ReceivedCommand recognise(const std::string& record, const ICommandReceiver::Prototypes& prototypes,
                          const CommandPing& ping);

/// Tells the receiver of a record that none of them has taken, as far as it has a head.
void tellUnreadable(const ReceivedCommand& received, const std::string& record,
                    ICommandReceiver& receiver);
