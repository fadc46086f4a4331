#include "TraceFile.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "support/TempFolder.h"

namespace {

TEST(TraceFile, LiesBesideTheHost) {
    const TempFolder folder;
    folder.write("host.log", "of an earlier run");
    const qorctl::TraceFile trace(folder.pathOf("host.exe"));
    EXPECT_EQ(folder.pathOf("host.log"), trace.path());
    EXPECT_EQ("", trace.held());
}

TEST(TraceFile, ThatAnotherProgramHasOpenIsLeftToItAndItsSettingsCount) {
    const TempFolder folder;
    folder.write("host.cfg", "notrace\n");
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> open(
        std::fopen(folder.pathOf("host.log").c_str(), "w"), &std::fclose);
    const std::string own = folder.pathOf("host-" + std::to_string(GetCurrentProcessId()));
    {
        const qorctl::TraceFile trace(folder.pathOf("host.exe"));
        EXPECT_EQ(own + ".log", trace.path());
        EXPECT_EQ(folder.pathOf("host.log"), trace.held());
        EXPECT_EQ("notrace\n", bytesOfFile(own + ".cfg"));
    }
    EXPECT_FALSE(fileExists(own + ".cfg"));
    EXPECT_TRUE(fileExists(folder.pathOf("host.log")));
}

}  // namespace
