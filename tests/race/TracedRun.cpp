// The library with its true trace: whatever is locked around a line, or inside of one, comes into
// the order of locks that the sanitizer looks at. Without it (UnlockedTrace.cpp) more races show.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "trace/Trace.h"

namespace {

class TracedRun final : public ::testing::Environment {
public:
    void SetUp() override {
        std::ofstream(base_ + ".cfg") << "tid\ndt\ntfr=1\n";
        tracelog::loadSettings((base_ + ".cfg").c_str());
        tracelog::openTraceFile((base_ + ".log").c_str(), "w");
    }
    void TearDown() override {
        tracelog::openTraceFile("/no such folder/x.log", "w");
        EXPECT_GT(linesWith("QorControlFacade::"), 100) << "this is not the true trace";
        std::filesystem::remove(base_ + ".cfg");
        std::filesystem::remove(base_ + ".log");
    }

private:
    int linesWith(const std::string& text) const {
        std::ifstream file(base_ + ".log");
        int count = 0;
        for (std::string line; std::getline(file, line);)
            if (line.find(text) != std::string::npos) ++count;
        return count;
    }

    const std::string base_ = ::testing::TempDir() + "traced-run-" + std::to_string(::getpid());
};

[[maybe_unused]] const auto* const environment = ::testing::AddGlobalTestEnvironment(new TracedRun);

// A few that come to nearly every lock.
[[maybe_unused]] const bool isChosen = [] {
    GTEST_FLAG_SET(filter, "*.EveryOperation*:*.TheConnectionBreaks*:*.TwoFacades*");
    return true;
}();

}  // namespace
