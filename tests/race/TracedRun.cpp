// The library with its true trace: whatever is locked around a line, or inside of one, comes into
// the order of locks that the sanitizer looks at. Without it (UnlockedTrace.cpp) more races show.
#include <gtest/gtest.h>

#include "TraceFiles.h"

namespace {

class TracedRun final : public ::testing::Environment {
public:
    void SetUp() override { files_.open(); }
    void TearDown() override {
        EXPECT_GT(files_.linesWith("QorControlFacade::"), 100) << "this is not the true trace";
    }

private:
    const TraceFiles files_{"traced-run", "tid\ndt\ntfr=1\n"};
};

[[maybe_unused]] const auto* const environment = ::testing::AddGlobalTestEnvironment(new TracedRun);

// A few that come to nearly every lock.
[[maybe_unused]] const bool isChosen = [] {
    GTEST_FLAG_SET(filter, "*.EveryOperation*:*.TheConnectionBreaks*:*.TwoFacades*");
    return true;
}();

}  // namespace
