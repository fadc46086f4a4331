#pragma once

#include <string>

enum class Transport { tcp, window };
/// How QOR answers with data: by the answer, or by a command of its own behind an acknowledgement.
enum class Answers { stamped, separate };

/// Writes the settings of a simulated QOR that nobody else talks to, over that transport, and gives
/// the path of the file. `who` tells those of one run apart.
std::string writeSettings(Transport transport, const std::string& who,
                          Answers answers = Answers::stamped);

/// The same for a peer of the benchmark's own that listens at the port.
std::string writeSettings(unsigned int port, const std::string& who);
