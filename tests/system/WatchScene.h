#pragma once

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "QorctlProcess.h"
#include "Station.h"

/// "qorctl watch" with the settings of a station: qorctl is the host and starts the station's QOR.
class WatchScene {
public:
    explicit WatchScene(Transport transport) : station(transport) {}

    Station station;

    /// The command line: the command, then these words behind the settings.
    std::vector<std::string> words(const std::string& command,
                                   const std::vector<std::string>& more) {
        station.writeSettings();
        std::vector<std::string> all = {command, station.settingsPath, "--trace",
                                        station.tracePath()};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    QorctlProcess::Ended run(const std::string& command, const std::vector<std::string>& more) {
        return runQorctl(words(command, more));
    }
};

inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// One object per line.
inline std::vector<nlohmann::json> jsonLinesOf(const std::string& text) {
    std::vector<nlohmann::json> objects;
    for (const std::string& line : linesOf(text)) objects.push_back(nlohmann::json::parse(line));
    return objects;
}
