#include "qorcontrol/Lock.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <stdexcept>

#include "TestThread.h"

using testing_support::TestThread;

namespace {

// Whether the lock's critical section, its first member, is one that the system knows. A deleted
// one may still seem to work.
bool hasSection(const common::Lock& lock) {
    return reinterpret_cast<const CRITICAL_SECTION&>(lock).DebugInfo != nullptr;
}

// Whether another thread can have the lock now.
bool isFree(common::Lock& lock) {
    TestThread other([&] { const common::LockGuard guard(lock); });
    const bool entered = other.endsWithin(50);
    if (!entered) {
        lock.leave();  // let the other thread end; the caller has entered once more than it left
        other.join();
        lock.enter();
    }
    return entered;
}

}  // namespace

TEST(Lock, KeepsAnotherThreadOutUntilItIsLeft) {
    common::Lock lock;
    lock.enter();
    EXPECT_FALSE(isFree(lock));
    lock.leave();
    EXPECT_TRUE(isFree(lock));
}

TEST(Lock, IsRecursiveAndFreeOnlyAfterAsManyLeavesAsEnters) {
    common::Lock lock;
    lock.enter();
    lock.enter();
    lock.leave();
    EXPECT_FALSE(isFree(lock));
    lock.leave();
    EXPECT_TRUE(isFree(lock));
}

TEST(Lock, ServesAgainAfterARelease) {
    common::Lock lock;
    lock.enter();
    lock.leave();
    lock.release();
    EXPECT_FALSE(hasSection(lock));
    lock.enter();
    EXPECT_TRUE(hasSection(lock));
    EXPECT_FALSE(isFree(lock));
    lock.leave();
    EXPECT_TRUE(isFree(lock));
}

TEST(Lock, ReleasingTwiceIsHarmless) {
    common::Lock lock;
    lock.release();
    lock.release();
    const common::LockGuard guard(lock);
}

TEST(Lock, AGuardLeavesItAlsoWhenAnExceptionPasses) {
    common::Lock lock;
    try {
        const common::LockGuard guard(lock);
        throw std::runtime_error("on purpose");
    } catch (const std::runtime_error&) {
    }
    EXPECT_TRUE(isFree(lock));
}

TEST(Lock, TenThreadsNeverMeetInside) {
    common::Lock lock;
    int inside = 0;
    int meetings = 0;
    int visits = 0;
    const auto visit = [&] {
        for (int i = 0; i < 5000; ++i) {
            const common::LockGuard guard(lock);
            if (++inside != 1) ++meetings;
            ++visits;
            --inside;
        }
    };
    {
        TestThread threads[] = {TestThread(visit), TestThread(visit), TestThread(visit),
                                TestThread(visit), TestThread(visit), TestThread(visit),
                                TestThread(visit), TestThread(visit), TestThread(visit),
                                TestThread(visit)};
    }
    EXPECT_EQ(meetings, 0);
    EXPECT_EQ(visits, 50000);
}
