#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "trace/Trace.h"

/// The settings of a trace and its file, gone with this object.
class TraceFiles {
public:
    /// `name` tells them from others.
    TraceFiles(const std::string& name, const std::string& settings)
        : base_(::testing::TempDir() + name + "-" + std::to_string(::getpid())) {
        std::ofstream(base_ + ".cfg") << settings;
    }
    ~TraceFiles() {
        tracelog::openTraceFile("/no such folder/x.log", "w");
        std::filesystem::remove(base_ + ".cfg");
        std::filesystem::remove(base_ + ".log");
    }
    TraceFiles(const TraceFiles&) = delete;
    TraceFiles& operator=(const TraceFiles&) = delete;

    /// Reads the settings; a trace that is open already stays as it is.
    void open() const {
        tracelog::loadSettings((base_ + ".cfg").c_str());
        tracelog::openTraceFile((base_ + ".log").c_str(), "w");
    }

    int linesWith(const std::string& text) const {
        std::ifstream file(base_ + ".log");
        int count = 0;
        for (std::string line; std::getline(file, line);)
            if (line.find(text) != std::string::npos) ++count;
        return count;
    }

private:
    const std::string base_;
};
