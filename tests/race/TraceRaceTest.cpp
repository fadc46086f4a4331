#include <gtest/gtest.h>

#include "Crowd.h"
#include "trace/Trace.h"
#include "TraceFiles.h"

namespace {

using tracelog::libraryModule;

constexpr int lines = 200;

TEST(TraceRace, FourThreadsWriteAndOpenScopesWhileTheSettingsAreReadAgain) {
    const TraceFiles files("trace-race", "tid\ndt\ntc\nhpc\ntfr=1\n");
    files.open();
    {
        Crowd crowd;
        crowd.add(4, [](int thread) {
            for (int i = 0; i < lines; ++i) {
                const tracelog::Scope scope(libraryModule, "scope\n");
                tracelog::trace(libraryModule, tracelog::warning, 0, "line %d of %d\n", i, thread);
            }
        });
        for (int i = 0; i < 20; ++i) files.open();
    }
    EXPECT_EQ(files.linesWith("line "), 4 * lines);
    EXPECT_EQ(files.linesWith("{ scope"), 4 * lines);
    EXPECT_EQ(files.linesWith("} scope"), 4 * lines);
}

}  // namespace
