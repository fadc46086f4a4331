// The library is freed although a thread of it was let go: it stays until that thread has ended.

#include <gmock/gmock.h>

#include "QorProcesses.h"
#include "StationSettings.h"
#include "support/TempFolder.h"
#include "Waiting.h"

using testing::ElementsAre;

namespace {

constexpr DWORD amply = 60000;
constexpr const char* program = "system_life_host.exe";

/// A host as a process of its own: if it goes down it must not take the test along.
class Host {
public:
    explicit Host(const std::string& commandLine) {
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process = {};
        std::string line = commandLine;
        if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                            &startup, &process))
            return;
        CloseHandle(process.hThread);
        process_ = process.hProcess;
    }
    ~Host() {
        if (process_ == nullptr) return;
        TerminateProcess(process_, 1);
        CloseHandle(process_);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    bool endsWithin(DWORD timeoutMs) const {
        return WaitForSingleObject(process_, timeoutMs) == WAIT_OBJECT_0;
    }

private:
    HANDLE process_ = nullptr;
};

class LifeLetGo : public testing::TestWithParam<Transport> {
protected:
    ~LifeLetGo() override { qor::killAll(); }

    TempFolder folder;
    StationSettings settings{GetParam(), folder.path()};
    const std::string report = folder.pathOf("report.txt");

    std::string writeScript(const std::string& script) {
        settings.script = folder.write("script.json", script);
        return folder.write("qor.ini", settings.text());
    }
    /// The host's command line; with the title of QOR's question, or without a question.
    std::string hostFor(const std::string& title) const {
        std::string line = program;
        for (const std::string& argument :
             {folder.pathOf("qor.ini"), folder.pathOf("host.exe"), title, report})
            line += " \"" + argument + "\"";
        return line;
    }
    std::vector<std::string> reported() const { return linesOfFile(report); }
};

INSTANTIATE_TEST_SUITE_P(Over, LifeLetGo, everyTransport(), transportName);

TEST_P(LifeLetGo, TheAgentThatStillWaitsForQorsLaunchEndsInALibraryThatIsThere) {
    writeScript("this is no script, so QOR ends at once and never answers");
    const Host host(hostFor(""));
    EXPECT_TRUE(host.endsWithin(amply));
    EXPECT_THAT(reported(), ElementsAre("let go", "freed: loaded", "library: gone",
                                        "run-time library: gone", "end"));
    EXPECT_NE(std::string::npos, bytesOfFile(folder.pathOf("host.log")).find("Fail to launch QOR"))
        << "the agent had its say before it went";
}

/// Only over TCP a thread of its own shows QOR's questions.
class LifeLetGoOverTcp : public LifeLetGo {};

INSTANTIATE_TEST_SUITE_P(Over, LifeLetGoOverTcp, testing::Values(Transport::tcp), transportName);

TEST_P(LifeLetGoOverTcp, TheWorkerThatShowsQorsQuestionEndsInALibraryThatIsThere) {
    settings.executable.clear();  // QOR is somebody else's, so the agent does not wait for its end
    const std::string title = settings.titles + "-question";
    writeScript(R"({"at":[{"since":"connect","afterMs":100,"messageBox":{"caption":")" + title +
                R"(","text":"Go on?","type":4}}]})");
    ASSERT_TRUE(settings.startQor(folder.pathOf("qor.ini")));
    const Host host(hostFor(title));
    ASSERT_TRUE(eventually(amply, [&] { return reported().size() >= 2; }));
    ASSERT_FALSE(host.endsWithin(2000)) << "the agent has ended by now, and the worker still waits";
    EXPECT_THAT(reported(), ElementsAre("let go", "freed: loaded"));
    HWND const question = FindWindowA("#32770", title.c_str());
    ASSERT_NE(nullptr, question);
    ASSERT_TRUE(PostMessageA(question, WM_COMMAND, IDYES, 0));
    EXPECT_TRUE(host.endsWithin(amply));
    EXPECT_THAT(reported(), ElementsAre("let go", "freed: loaded", "library: gone",
                                        "run-time library: gone", "end"));
}

}  // namespace
