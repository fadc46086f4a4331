#pragma once

namespace qorcontrol {

/// Why an operation has failed. The numbers are those of QorControl.h and are never used again for
/// anything else.
enum class Cause : int {
    none = 0,              ///< it has not: it worked
    agentEnded = 1,        ///< the library's agent has ended, or could not start QOR
    agentBusy = 2,         ///< the agent was at other requests for the whole time
    pushedOut = 3,         ///< later requests pushed this one out of the full queue
    noConnection = 4,      ///< QOR's window or port was not to be had
    qorSilent = 5,         ///< QOR did not take the request in time
    noData = 6,            ///< QOR took the request, but its data did not come in time
    refused = 7,           ///< QOR refused the request
    unknownName = 8,       ///< QOR knows no parameter of that name
    kwpBeforeConnect = 9,  ///< KWP needs a connect before it
    cancelled = 10,        ///< the host cancelled
    connectReported = 11,  ///< QOR reported that the connect failed
    ecuOffline = 12,       ///< the ECU did not come online in time
    resultTooLarge = 13,   ///< the result does not fit into what the caller offers
    badArgument = 14,      ///< an argument that no request can be made of
    outOfMemory = 15,      ///< too little memory
    requestTooLarge = 16,  ///< the request does not fit into one record
    qorChanged = 17,       ///< QOR became another one, or opened another model, meanwhile
    badAnswer = 18,        ///< what QOR answered is not what was asked for
    systemFailure = 19,    ///< the system refused something that the library needs
    badHandle = 20,        ///< closed, or never one
    notReady = 21,         ///< nothing there yet: ask again later
    wrongOrder = 22        ///< not now: something else must come first, or must end first
};

}  // namespace qorcontrol
