#pragma once

#include <string>

#include "QorControlFacade.h"

namespace CLI {
class App;
}

namespace qorctl {

/// How the ECU is connected. What is not said on the command line is as QOR itself would have it.
struct ConnectOptions {
    std::string type = "default";  ///< "default", "security" or "alternative"
    unsigned int protocol = 1;
    unsigned int protocolOption = 1;
    unsigned int kLineBaudRate = 10400;
    unsigned int canBaudRate = 125000;
    unsigned int canRequestId = 0xFFFFFFFF;
    unsigned int canResponseId = 0xFFFFFFFF;
    unsigned int addressByte1 = 0xFF;
    unsigned int addressByte2 = 0xFF;
    unsigned int addressWord = 255;
    std::string securityDll;
    bool withoutOptionFlag = false;
    bool withoutExtraFlag = false;
    bool withoutFinalFlag = false;

    /// Declares the options; the object must live until the command line is parsed. Where they are
    /// not what the command is about, `listed` is false and its help leaves them out.
    void declare(CLI::App& command, bool listed);

    QorControlFacade::EcuConnect::ConnType connType() const;
    QorControlFacade::EcuConnect record(unsigned int refreshMs) const;
};

}  // namespace qorctl
