#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "behaviour/Answer.h"
#include "config/Names.h"
#include "script/Transport.h"

namespace simulator {

/// What the settings file says that concerns the simulator. Paths are absolute.
struct Settings {
    Transport transport = Transport::Tcp;
    std::string serverIp;  ///< with the port: TCP only
    std::uint16_t tcpPort = 0;
    std::string serverTitle;  ///< titles of the windows: window messages only
    std::string clientTitle;
    WindowAnswer windowAnswer = WindowAnswer::Released;
    std::uint32_t windowSendMs = 500;  ///< how long a message of ours waits for the client
    std::string modelPath;
    std::string scriptPath;
    std::string recordLogPath;
    std::string exportPrefix;
    AnswerStyle answerStyle = AnswerStyle::Stamped;
    std::uint32_t connectMs = 600;
    std::uint32_t exitWithoutClientMs = 60000;  ///< 0 = never
};

/// What relative and missing paths go by. Folders end with a separator.
struct Places {
    std::string settingsFolder;
    std::string programFolder;
    /// Begin of the path of export files, unless the settings name another.
    std::string exportPrefix;
};

/// Reads a value of a section; an empty text when it is missing.
using SettingsReader =
    std::function<std::string(const std::string& section, const std::string& key)>;

/// The human-readable log that the settings ask for; empty = none. Cannot fail, so that all other
/// mistakes can be written there.
std::string logPathFrom(const SettingsReader& read, const Places& places);

/// The section that is the simulator's own.
inline constexpr const char* ownSection = "Simulator";

/// A key of our own section that nothing reads is a spelling mistake. Throws ConfigError.
void refuseUnknownKeys(const Names& keysOfOwnSection);

/// Throws ConfigError, which names the section, the key and the reason.
Settings settingsFrom(const SettingsReader& read, const Places& places);

}  // namespace simulator
