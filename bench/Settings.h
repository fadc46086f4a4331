#pragma once

#include <string>

enum class Transport { tcp, window };

/// Writes the settings of a simulated QOR that nobody else talks to, over that transport, and gives
/// the path of the file. `who` tells those of one run apart.
std::string writeSettings(Transport transport, const std::string& who);
