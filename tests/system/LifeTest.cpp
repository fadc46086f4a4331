// The library is loaded, used and unloaded, again and again. This program itself is not linked to
// it: it comes with a plug-in and must go with it.

#include <gmock/gmock.h>

#include "LifeProbe.h"
#include "QorProcesses.h"
#include "StationSettings.h"
#include "support/TcpProcessFigures.h"
#include "support/TempFolder.h"
#include "Waiting.h"

namespace {

constexpr int rounds = 5;

struct Figures {
    unsigned threads;
    std::uintptr_t nextHandle;
    std::size_t bytes;
};

class Life : public testing::TestWithParam<Transport> {
protected:
    Life() {
        // Started by somebody else, so that the library keeps no handles of a process of QOR.
        settings.executable.clear();
        folder.write("qor.ini", settings.text());
    }
    ~Life() override { qor::killAll(); }

    TempFolder folder;
    StationSettings settings{GetParam(), folder.path()};

    bool startQor() { return settings.startQor(folder.pathOf("qor.ini")); }

    void useLibraryOnce() {
        HMODULE const plugIn = LoadLibraryA("system_life_probe.dll");
        ASSERT_NE(nullptr, plugIn);
        ASSERT_NE(nullptr, GetModuleHandleA("QorControlFacade.dll"));
        const auto use = reinterpret_cast<decltype(&useFacade)>(
            reinterpret_cast<void*>(GetProcAddress(plugIn, "useFacade")));
        ASSERT_NE(nullptr, use);
        EXPECT_EQ(allOfFacade,
                  use(folder.pathOf("qor.ini").c_str(), folder.pathOf("host.exe").c_str()))
            << bytesOfFile(folder.pathOf("host.log"));
        ASSERT_TRUE(FreeLibrary(plugIn));
    }

    static Figures figures() {
        // A thread that has ended leaves the list a moment later.
        Sleep(100);
        return {tcp::threadCount(), tcp::nextFreeHandle(), tcp::memoryBytes()};
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Life, everyTransport(), transportName);

TEST_P(Life, ThreadsHandlesAndMemoryAreFlatFromTheSecondLoadOn) {
    ASSERT_TRUE(startQor());
    useLibraryOnce();
    useLibraryOnce();
    const Figures before = figures();
    for (int round = 0; round < rounds; ++round) {
        useLibraryOnce();
        EXPECT_EQ(nullptr, GetModuleHandleA("QorControlFacade.dll"));
        const Figures now = figures();
        EXPECT_EQ(before.threads, now.threads) << "round " << round;
        EXPECT_LE(now.nextHandle, before.nextHandle + 8) << "round " << round;
        EXPECT_LE(now.bytes, before.bytes + 512 * 1024) << "round " << round;
    }
}

TEST_P(Life, TheTraceFileIsClosedWhenTheLibraryGoes) {
    ASSERT_TRUE(startQor());
    useLibraryOnce();
    const std::string path = folder.pathOf("host.log");
    EXPECT_NE(std::string::npos, bytesOfFile(path).find("} QorControlFacade::~QorControlFacade()"));
    EXPECT_TRUE(DeleteFileA(path.c_str()));
    EXPECT_FALSE(fileExists(path));
    useLibraryOnce();
    EXPECT_TRUE(fileExists(path));
}

}  // namespace
