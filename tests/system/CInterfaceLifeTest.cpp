// The C interface comes and goes: with and without open handles, again and again. This program
// itself is not linked to it.

// Before all others: it needs the sockets' header before the system's.
#include "support/HandleCensus.h"

#include <gmock/gmock.h>

#include "QorControl.h"
#include "QorProcesses.h"
#include "StationSettings.h"
#include "support/TcpProcessFigures.h"
#include "support/TempFolder.h"
#include "Waiting.h"

using testing::ElementsAre;

namespace {

constexpr const char* library = "QorControlC.dll";

template <class Function>
Function* imported(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

class CLife : public testing::TestWithParam<Transport> {
protected:
    CLife() {
        // Started by somebody else: no handles of QOR's process, and no QOR that outlives a host.
        settings.executable.clear();
        folder.write("qor.ini", settings.text());
    }
    ~CLife() override { qor::killAll(); }

    TempFolder folder;
    StationSettings settings{GetParam(), folder.path()};

    bool startQor() { return settings.startQor(folder.pathOf("qor.ini")); }

    /// Runs a host that leaves a handle open; what it reports.
    std::vector<std::string> hostThatLeaves(const std::string& settingsName,
                                            const std::string& how) {
        const std::string simulator = qor::executable();
        std::string line = "\"" + simulator.substr(0, simulator.find_last_of('\\') + 1) +
                           "system_c_life_host.exe\" \"" + folder.pathOf("report") + "\" \"" +
                           folder.pathOf(settingsName) + "\" " + how;
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION host = {};
        if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                            &startup, &host))
            return {"not started"};
        if (WaitForSingleObject(host.hProcess, 60000) != WAIT_OBJECT_0)
            TerminateProcess(host.hProcess, 99);
        DWORD exitCode = 1;
        GetExitCodeProcess(host.hProcess, &exitCode);
        EXPECT_EQ(0u, exitCode);
        CloseHandle(host.hThread);
        CloseHandle(host.hProcess);
        return linesOfFile(folder.pathOf("report"));
    }

    /// Loads the library, uses it, frees it.
    void useOnce() {
        HMODULE const module = LoadLibraryA(library);
        ASSERT_NE(nullptr, module);
        QorHandle handle = nullptr;
        EXPECT_EQ(QOR_OK, imported<decltype(QorOpen)>(module, "QorOpen")(
                              folder.pathOf("qor.ini").c_str(), 0, "", &handle));
        EXPECT_EQ(QOR_OK, imported<decltype(QorPingQor)>(module, "QorPingQor")(handle, 15000));
        EXPECT_EQ(QOR_OK, imported<decltype(QorGetDtcByStatus)>(module, "QorGetDtcByStatus")(
                              handle, 5000, nullptr, 0, nullptr));
        EXPECT_EQ(QOR_BAD_HANDLE, imported<decltype(QorPingQor)>(module, "QorPingQor")(nullptr, 0));
        EXPECT_EQ(QOR_OK, imported<decltype(QorClose)>(module, "QorClose")(handle));
        EXPECT_TRUE(FreeLibrary(module));
        EXPECT_EQ(nullptr, GetModuleHandleA(library));
    }
};

INSTANTIATE_TEST_SUITE_P(Over, CLife, everyTransport(), transportName);

TEST_P(CLife, AnOpenHandleWhoseAgentHasEndedGoesWithTheLibrary) {
    EXPECT_THAT(hostThatLeaves("none.ini", "ended"),
                ElementsAre("ping: QOR_AGENT_ENDED", "refused: QOR_BAD_HANDLE", "freed: 1",
                            "library: gone", "end"));
}

TEST_P(CLife, AnOpenHandleOfQorKeepsTheLibraryAndTheProcessEndsAllTheSame) {
    ASSERT_TRUE(startQor());
    EXPECT_THAT(hostThatLeaves("qor.ini", "live"),
                ElementsAre("ping: QOR_OK", "refused: QOR_BAD_HANDLE", "freed: 1",
                            "library: loaded", "end"));
}

TEST_P(CLife, AProcessThatJustEndsWithOpenHandlesEnds) {
    ASSERT_TRUE(startQor());
    EXPECT_THAT(hostThatLeaves("qor.ini", "exit"),
                ElementsAre("ping: QOR_OK", "refused: QOR_BAD_HANDLE", "end"));
}

// The run-time library that the DLL has inside leaves an event, a thread's handle and two
// semaphores behind with each unloading.
TEST_P(CLife, ThreadsMemoryAndAllButFourHandlesAreFlatFromTheSecondLoadOn) {
    ASSERT_TRUE(startQor());
    useOnce();
    useOnce();
    Sleep(100);
    const unsigned threads = tcp::threadCount();
    const HandleCensus handles = countHandles();
    const std::size_t bytes = tcp::memoryBytes();
    constexpr int rounds = 5;
    for (int round = 0; round < rounds; ++round) useOnce();
    Sleep(100);
    EXPECT_EQ(threads, tcp::threadCount());
    for (const auto& [type, more] : difference(countHandles(), handles))
        EXPECT_LE(more, (type == "Semaphore" ? 2 : 1) * rounds) << type;
    EXPECT_LE(tcp::memoryBytes(), bytes + 512 * 1024);
}

}  // namespace
