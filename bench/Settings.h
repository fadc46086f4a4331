#pragma once

#include <string>

enum class Transport { tcp, window };
/// How QOR answers with data: by the answer, or by a command of its own behind an acknowledgement.
enum class Answers { stamped, separate };

/// "TCP" or "window", as the figures are named.
const char* nameOf(Transport transport);

/// Where a facade and a QOR meet that nobody else talks to.
struct Meeting {
    Transport transport;
    unsigned int port;
    std::string serverTitle, clientTitle;
    std::string settingsPath;  ///< of the file that tells the facade
};

/// Writes the settings for a QOR that somebody else starts. `who` tells those of one run apart.
Meeting meetPeer(Transport transport, const std::string& who);

/// Writes the settings of a simulated QOR over that transport, and gives the path of the file.
std::string writeSettings(Transport transport, const std::string& who,
                          Answers answers = Answers::stamped);
