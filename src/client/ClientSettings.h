#pragma once

#include <string>

/// The keys of QOR's settings file that this library uses (section "CommonSettings"). The file is
/// read once, when the client is created, and never written: what changes in it later is for the
/// next client.
struct ClientSettings {
    std::string path;            ///< the file itself, which QOR is started with, too
    std::string executable;      ///< "QORexecutable" as it stands there; empty: QOR is not started
    std::string clientPipeName;  ///< title of this library's receiving window
    std::string serverPipeName;  ///< title of QOR's receiving window
    std::string serverIp;        ///< address of QOR's listening socket
    unsigned int tcpPort = 0;    ///< its port
    bool useTcp = false;         ///< "UseTcp" is "true" in any case; every other text means false
    /// "InitMFC" is 1 (the default): the library becomes an application of its own in the window
    /// framework. Otherwise it lives in the host's.
    bool initMfc = true;

    static ClientSettings read(const std::string& path);

    /// The most characters of a value that count; of the executable, when it is started.
    static constexpr unsigned int maxValueChars = 5199;
    static constexpr unsigned int maxLaunchChars = 9999;
};
