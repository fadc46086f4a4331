// What the library writes when a program loads it, and when it goes: station files begin and end
// so.

#include <gmock/gmock.h>
#include <windows.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>

#include "support/TempFolder.h"

using testing::ElementsAre;

namespace {

/// A program in a folder of its own, with the library and the run-time libraries beside it. Called
/// without an argument it ends before it makes a facade.
class Attach : public testing::Test {
protected:
    Attach() {
        char self[MAX_PATH] = "";
        GetModuleFileNameA(nullptr, self, sizeof self);
        const auto bin = std::filesystem::path(self).parent_path();
        for (const auto& file : std::filesystem::directory_iterator(bin))
            if (file.path().extension() == ".dll" || file.path().stem() == "minimal-host")
                std::filesystem::copy(file.path(), folder.path());
    }

    DWORD runHost() {
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION host = {};
        const std::string path = folder.pathOf("minimal-host.exe");
        DWORD exitCode = 0;
        if (!CreateProcessA(path.c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                            &startup, &host))
            return exitCode;
        WaitForSingleObject(host.hProcess, 30000);
        GetExitCodeProcess(host.hProcess, &exitCode);
        char id[16];
        std::snprintf(id, sizeof id, "%lX", host.dwThreadId);
        mainThread = id;
        CloseHandle(host.hThread);
        CloseHandle(host.hProcess);
        return exitCode;
    }

    std::ptrdiff_t fileCount() const {
        return std::distance(std::filesystem::directory_iterator(folder.path()), {});
    }

    TempFolder folder;
    std::string mainThread;  // of the program that ran, in hexadecimal
};

TEST_F(Attach, IsTracedWithTheThreadIntoTheFileOfTheSettingsBesideTheProgram) {
    folder.write("QorControlFacade.cfg", "tf=station.txt\n");
    EXPECT_EQ(runHost(), 2u);
    EXPECT_THAT(linesOfFile(folder.pathOf("station.txt")),
                ElementsAre("ts ", "1\t{ DllMain()", "1\t   Attach to the process: " + mainThread,
                            "1\t} DllMain()", "1\tDetach from the process: " + mainThread));
}

TEST_F(Attach, WritesNoFileWithoutSettings) {
    const auto before = fileCount();
    EXPECT_EQ(runHost(), 2u);
    EXPECT_EQ(fileCount(), before);
}

}  // namespace
