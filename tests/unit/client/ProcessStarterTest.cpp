#include "client/ProcessStarter.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <string>
#include <vector>

#include "support/TempFolder.h"

namespace {

/// Starts the probe that stands beside the test program, and lets it end.
class StartedProcess : public testing::Test {
protected:
    ~StartedProcess() override {
        const std::string end = folder.write("report.end", "");
        for (int i = 0; i < 1000 && fileExists(end); ++i) Sleep(10);
    }

    bool start() {
        char self[MAX_PATH] = "";
        GetModuleFileNameA(nullptr, self, sizeof self);
        const std::string path = self;
        return ProcessStarter().start(
            path.substr(0, path.rfind('\\') + 1) + "client_start_probe.exe", line);
    }

    std::vector<std::string> report() const {
        std::vector<std::string> lines;
        for (int i = 0; i < 1000 && lines.size() < 2; ++i) {
            Sleep(10);
            lines = linesOfFile(folder.pathOf("report"));
        }
        return lines;
    }

    const TempFolder folder;
    const std::string line = " -external_operating " + folder.pathOf("report");
};

TEST_F(StartedProcess, IsMinimisedAndHasExactlyItsCommandLine) {
    ASSERT_TRUE(start());
    EXPECT_THAT(report(), testing::ElementsAre(line, "show 2"));
}

// Otherwise QOR would keep open what the host believes to have closed.
TEST_F(StartedProcess, HasNoneOfTheHostsHandles) {
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    const std::string path = folder.pathOf("hosts");
    HANDLE const file = CreateFileA(path.c_str(), GENERIC_WRITE, 0, &inheritable, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    ASSERT_TRUE(start());
    EXPECT_THAT(report(), testing::SizeIs(2));  // it runs
    CloseHandle(file);
    EXPECT_TRUE(DeleteFileA(path.c_str()));
}

}  // namespace
