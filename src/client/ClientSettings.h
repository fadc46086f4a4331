#pragma once

#include <string>

/// The keys of QOR's settings file that this library uses (section "CommonSettings"). The file is
/// never written.
struct ClientSettings {
    std::string clientPipeName;  ///< title of this library's receiving window
    std::string serverPipeName;  ///< title of QOR's receiving window
    std::string serverIp;        ///< address of QOR's listening socket
    unsigned int tcpPort = 0;    ///< its port
    bool useTcp = false;         ///< "UseTcp" is "true" in any case; every other text means false

    static ClientSettings read(const std::string& path);

    /// "QORexecutable" as it stands in the file, at most `maxChars` characters; empty: QOR is
    /// started by someone else.
    static std::string readExecutable(const std::string& path, unsigned int maxChars);

    /// "InitMFC" is 1 (the default): the library becomes an application of its own in the window
    /// framework. Otherwise it lives in the host's.
    static bool readInitMfc(const std::string& path);

    /// The most characters of a value that are read here and, of the executable, at the launch.
    static constexpr unsigned int maxValueChars = 5199;
    static constexpr unsigned int maxLaunchChars = 9999;
};
