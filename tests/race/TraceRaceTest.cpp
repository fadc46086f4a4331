#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "Crowd.h"
#include "trace/Trace.h"

namespace {

using tracelog::libraryModule;

constexpr int lines = 200;

/// A trace file and its settings, gone with this object.
class TraceRace : public ::testing::Test {
protected:
    TraceRace() { std::ofstream(base + ".cfg") << "tid\ndt\ntc\nhpc\ntfr=1\n"; }
    ~TraceRace() override {
        tracelog::openTraceFile("/no such folder/x.log", "w");
        std::filesystem::remove(base + ".cfg");
        std::filesystem::remove(base + ".log");
    }

    int linesWith(const std::string& text) const {
        std::ifstream file(base + ".log");
        int count = 0;
        for (std::string line; std::getline(file, line);)
            if (line.find(text) != std::string::npos) ++count;
        return count;
    }

    const std::string base = ::testing::TempDir() + "trace-race-" + std::to_string(::getpid());
};

TEST_F(TraceRace, FourThreadsWriteAndOpenScopesWhileTheSettingsAreReadAgain) {
    tracelog::loadSettings((base + ".cfg").c_str());
    tracelog::openTraceFile((base + ".log").c_str(), "w");
    {
        Crowd crowd;
        crowd.add(4, [](int thread) {
            for (int i = 0; i < lines; ++i) {
                const tracelog::Scope scope(libraryModule, "scope\n");
                tracelog::trace(libraryModule, tracelog::warning, 0, "line %d of %d\n", i, thread);
            }
        });
        for (int i = 0; i < 20; ++i) {
            tracelog::loadSettings((base + ".cfg").c_str());
            tracelog::openTraceFile((base + ".log").c_str(), "w");  // it is open: nothing happens
        }
    }
    EXPECT_EQ(linesWith("line "), 4 * lines);
    EXPECT_EQ(linesWith("{ scope"), 4 * lines);
    EXPECT_EQ(linesWith("} scope"), 4 * lines);
}

}  // namespace
