#include "qorcontrol/Event.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "TestThread.h"

using testing_support::TestThread;

TEST(Event, IsInitiallyNotSignalled) {
    common::Event event;
    ASSERT_TRUE(event.exists());
    EXPECT_FALSE(event.wait(0));
}

TEST(Event, OneSignalLetsOneWaitThrough) {
    common::Event event;
    event.signal();
    EXPECT_TRUE(event.wait(0));
    EXPECT_FALSE(event.wait(0));
}

TEST(Event, SignalsBeforeAWaitDoNotAddUp) {
    common::Event event;
    event.signal();
    event.signal();
    EXPECT_TRUE(event.wait(0));
    EXPECT_FALSE(event.wait(0));
}

TEST(Event, ResetTakesASignalBack) {
    common::Event event;
    event.signal();
    event.reset();
    EXPECT_FALSE(event.wait(0));
}

TEST(Event, AWaitWithoutASignalLastsItsTimeOut) {
    common::Event event;
    const DWORD before = GetTickCount();
    EXPECT_FALSE(event.wait(80));
    EXPECT_GE(GetTickCount() - before, 60u) << "ticks move in steps of up to 20 ms";
}

TEST(Event, AWaitWithoutEndEndsWithTheSignalOfAnotherThread) {
    common::Event event;
    TestThread signaller([&] {
        Sleep(20);
        event.signal();
    });
    EXPECT_TRUE(event.wait(common::Event::infinite));
}

TEST(Event, OneSignalWakesOnlyOneOfTwoWaiters) {
    common::Event event;
    bool woken[2] = {};
    {
        TestThread first([&] { woken[0] = event.wait(200); });
        TestThread second([&] { woken[1] = event.wait(200); });
        Sleep(30);
        event.signal();
    }
    EXPECT_NE(woken[0], woken[1]);
}

TEST(Event, TheHandleServesAWaitOnSeveralThings) {
    common::Event event;
    common::Event other;
    event.signal();
    const HANDLE handles[] = {other.handle(), event.handle()};
    EXPECT_EQ(WaitForMultipleObjects(2, handles, FALSE, 0), WAIT_OBJECT_0 + 1);
    EXPECT_FALSE(event.wait(0)) << "the wait on both has taken the signal";
}

TEST(Event, TheHandleIsClosedWithTheEvent) {
    HANDLE handle = nullptr;
    {
        common::Event event;
        handle = event.handle();
    }
    EXPECT_FALSE(SetEvent(handle));
}
