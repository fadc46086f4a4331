#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "QorctlProcess.h"
#include "Station.h"

/// The command-line host with the settings of a station: it is the host and starts the station's
/// QOR.
class QorctlScene : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};

    /// The command line: the command, the settings, a trace of its own, then these words.
    std::vector<std::string> words(const std::string& command,
                                   const std::vector<std::string>& more = {}) {
        station.writeSettings();
        std::vector<std::string> all = {command, station.settingsPath, "--trace",
                                        station.tracePath()};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    QorctlProcess::Ended run(const std::string& command, const std::vector<std::string>& more = {},
                             const std::string& input = {}) {
        return runQorctl(words(command, more), input);
    }
};
