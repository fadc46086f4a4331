#include "common/Thread.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <functional>

#include "qorcontrol/Event.h"

using common::Thread;
using common::ThreadState;

namespace {

// What a thread of these tests works with; it must outlive the thread.
struct Work {
    common::Event begun;
    common::Event mayEnd;
    common::Event ended;
    unsigned int exitCode = 0;
    unsigned int threadId = 0;
};

unsigned __stdcall run(void* argument) {
    auto& work = *static_cast<Work*>(argument);
    work.threadId = common::currentThreadId();
    work.begun.signal();
    work.mayEnd.wait(common::Event::infinite);
    const unsigned int exitCode = work.exitCode;
    work.ended.signal();
    return exitCode;
}

bool comesTrue(const std::function<bool()>& condition) {
    for (int i = 0; i < 5000 && !condition(); ++i) Sleep(1);
    return condition();
}

}  // namespace

TEST(Thread, HasNeitherHandleNorStateBeforeItsStart) {
    const Thread thread;
    EXPECT_FALSE(thread.hasHandle());
    EXPECT_FALSE(thread.isRunning());
    EXPECT_EQ(thread.state(), ThreadState::unreadable);
}

TEST(Thread, RunsItsEntryWithItsArgumentOnAnotherThread) {
    Work work;
    Thread thread;
    ASSERT_TRUE(thread.start(run, &work));
    ASSERT_TRUE(work.begun.wait(5000));
    EXPECT_NE(work.threadId, GetCurrentThreadId());
    work.mayEnd.signal();
    EXPECT_TRUE(work.ended.wait(5000));
}

TEST(Thread, IsRunningUntilItsEntryReturns) {
    Work work;
    Thread thread;
    ASSERT_TRUE(thread.start(run, &work));
    EXPECT_TRUE(thread.hasHandle());
    EXPECT_TRUE(thread.isRunning());
    EXPECT_EQ(thread.state(), ThreadState::running);
    work.mayEnd.signal();
    EXPECT_TRUE(comesTrue([&] { return thread.state() == ThreadState::ended; }));
    EXPECT_FALSE(thread.isRunning());
    EXPECT_TRUE(thread.hasHandle()) << "an ended thread keeps its handle";
}

TEST(Thread, AnEndedThreadWhoseExitCodeIs259LooksActiveToTheSystemOnly) {
    Work work;
    work.exitCode = STILL_ACTIVE;
    Thread thread;
    ASSERT_TRUE(thread.start(run, &work));
    work.mayEnd.signal();
    EXPECT_TRUE(comesTrue([&] { return !thread.isRunning(); }));
    EXPECT_EQ(thread.state(), ThreadState::running);
}

TEST(Thread, ClosingLetsTheThreadGoOn) {
    Work work;
    Thread thread;
    ASSERT_TRUE(thread.start(run, &work));
    ASSERT_TRUE(work.begun.wait(5000));
    EXPECT_TRUE(thread.close());
    EXPECT_FALSE(thread.hasHandle());
    EXPECT_FALSE(thread.isRunning());
    EXPECT_EQ(thread.state(), ThreadState::unreadable);
    EXPECT_FALSE(work.ended.wait(0));
    work.mayEnd.signal();
    EXPECT_TRUE(work.ended.wait(5000));
}

TEST(Thread, ClosingTwiceIsHarmless) {
    Work work;
    Thread thread;
    ASSERT_TRUE(thread.start(run, &work));
    work.mayEnd.signal();
    EXPECT_TRUE(thread.close());
    EXPECT_TRUE(thread.close());
    EXPECT_TRUE(work.ended.wait(5000));
}

TEST(Thread, MayOutliveItsObject) {
    Work work;
    {
        Thread thread;
        ASSERT_TRUE(thread.start(run, &work));
        ASSERT_TRUE(work.begun.wait(5000));
    }
    EXPECT_FALSE(work.ended.wait(0));
    work.mayEnd.signal();
    EXPECT_TRUE(work.ended.wait(5000));
}

TEST(Thread, AnUnreadableStateLeavesTheReasonInTheLastErrorCode) {
    const Thread thread;
    SetLastError(0);
    EXPECT_EQ(thread.state(), ThreadState::unreadable);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

TEST(Thread, TheCurrentThreadIdIsTheSystems) {
    EXPECT_EQ(common::currentThreadId(), GetCurrentThreadId());
}
