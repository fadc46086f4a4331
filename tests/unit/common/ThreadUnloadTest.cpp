// A library is freed by its host while threads that it has started still run.

#include <gtest/gtest.h>
#include <windows.h>

#include "qorcontrol/Event.h"
#include "ThreadProbe.h"

namespace {

constexpr DWORD amply = 20000;

bool isLoaded() {
    return GetModuleHandleA("common_thread_probe.dll") != nullptr;
}

template <class Function>
Function* functionOf(HMODULE library, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

class ThreadUnload : public testing::Test {
protected:
    HMODULE library = LoadLibraryA("common_thread_probe.dll");
    common::Event unloaded;
    unsigned long unloadedOn = 0;

    /// One of the library's threads.
    struct Runner {
        common::Event begun;
        common::Event mayEnd;
        ProbeWork work = {begun.handle(), mayEnd.handle(), 0, nullptr};

        ~Runner() {
            if (work.thread != nullptr) CloseHandle(work.thread);
        }
        DWORD id() const { return GetThreadId(work.thread); }
        /// Lets it end, waits for that and gives its exit code.
        DWORD end() {
            mayEnd.signal();
            EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(work.thread, amply));
            DWORD exitCode = 0;
            GetExitCodeThread(work.thread, &exitCode);
            return exitCode;
        }
    };

    void SetUp() override {
        ASSERT_NE(nullptr, library) << "error " << GetLastError();
        functionOf<decltype(tellTheEnd)>(library, "tellTheEnd")(unloaded.handle(), &unloadedOn);
    }
    void start(Runner& runner) const {
        const auto start =
            functionOf<decltype(startThreadInLibrary)>(library, "startThreadInLibrary");
        ASSERT_TRUE(start(&runner.work));
        ASSERT_TRUE(runner.begun.wait(amply));
    }
};

// Where the library is gone although a thread of its still runs, the tests end without letting that
// thread go on: it would run into nothing and take the whole program with it.

TEST_F(ThreadUnload, ALibraryStaysUntilItsThreadHasEndedAndGoesWithIt) {
    Runner runner;
    runner.work.exitCode = 7;
    start(runner);
    ASSERT_TRUE(FreeLibrary(library));
    ASSERT_TRUE(isLoaded());
    EXPECT_FALSE(unloaded.wait(50));
    EXPECT_EQ(7u, runner.end());
    EXPECT_FALSE(isLoaded());
}

TEST_F(ThreadUnload, TheStaticObjectsAreDestroyedOnTheThreadThatWentLast) {
    Runner runner;
    start(runner);
    ASSERT_TRUE(FreeLibrary(library));
    ASSERT_TRUE(isLoaded());
    const DWORD id = runner.id();
    runner.end();
    EXPECT_TRUE(unloaded.wait(0));
    EXPECT_EQ(id, unloadedOn);
}

TEST_F(ThreadUnload, OfSeveralThreadsTheLastOneTakesTheLibraryAlong) {
    Runner first;
    Runner second;
    start(first);
    start(second);
    ASSERT_TRUE(FreeLibrary(library));
    ASSERT_TRUE(isLoaded());
    first.end();
    ASSERT_TRUE(isLoaded());
    second.end();
    EXPECT_FALSE(isLoaded());
}

TEST_F(ThreadUnload, AThreadThatHasEndedHoldsNothing) {
    for (int round = 0; round < 3; ++round) {
        Runner runner;
        start(runner);
        runner.end();
        EXPECT_TRUE(isLoaded());
    }
    ASSERT_TRUE(FreeLibrary(library));
    EXPECT_FALSE(isLoaded());
    EXPECT_TRUE(unloaded.wait(0));
    EXPECT_EQ(GetCurrentThreadId(), unloadedOn);
}

TEST_F(ThreadUnload, AHostThatComesBackMeanwhileFindsTheLibraryAsItWas) {
    Runner runner;
    start(runner);
    ASSERT_TRUE(FreeLibrary(library));
    ASSERT_TRUE(isLoaded());
    ASSERT_EQ(library, LoadLibraryA("common_thread_probe.dll"));
    runner.end();
    EXPECT_TRUE(isLoaded());
    EXPECT_FALSE(unloaded.wait(0)) << "it was never gone";
    ASSERT_TRUE(FreeLibrary(library));
    EXPECT_FALSE(isLoaded());
}

}  // namespace
