#include "fibers/Scheduler.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <stdexcept>

namespace {

using fibers::Ms;
using fibers::Task;

/// The first that can run goes on; findings are kept.
class FirstComes final : public fibers::Scheduler {
public:
    FirstComes() : Scheduler(3) {}

    std::uint32_t tickCount() const override { return static_cast<std::uint32_t>(now()); }
    void find(const std::string& what) override { findings.push_back(what); }

    std::vector<std::string> findings;

private:
    Task& choose(const std::vector<Task*>& ready) override { return *ready.front(); }
    Ms lasting(Ms spanMs) override { return spanMs; }
    bool letTimePass() override {
        const Ms next = nextDue(true);
        if (next == fibers::never) return false;
        setNow(std::max(next, now()));
        wakeDue();
        return true;
    }
};

TEST(Scheduler, ASecondLockIsAFindingAndTheSameOneTwiceIsNone) {
    FirstComes scheduler;
    CRITICAL_SECTION first, second;
    InitializeCriticalSection(&first);
    InitializeCriticalSection(&second);
    std::size_t findingsOfOne = 1;
    scheduler.start([&] {
        EnterCriticalSection(&first);
        EnterCriticalSection(&first);
        findingsOfOne = scheduler.findings.size();
        EnterCriticalSection(&second);
        LeaveCriticalSection(&second);
        LeaveCriticalSection(&first);
        LeaveCriticalSection(&first);
    });
    EXPECT_TRUE(scheduler.run());
    EXPECT_EQ(findingsOfOne, 0u);
    EXPECT_EQ(scheduler.findings, std::vector<std::string>{"a thread takes a second lock"});
}

TEST(Scheduler, AWaitWithALockHeldIsAFindingAndOneWithoutIsNone) {
    FirstComes scheduler;
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    std::size_t findingsBefore = 1;
    scheduler.start([&] {
        Sleep(5);
        findingsBefore = scheduler.findings.size();
        EnterCriticalSection(&section);
        Sleep(5);
        LeaveCriticalSection(&section);
    });
    EXPECT_TRUE(scheduler.run());
    EXPECT_EQ(findingsBefore, 0u);
    EXPECT_EQ(scheduler.findings, std::vector<std::string>{"a thread waits with a lock held"});
    EXPECT_EQ(scheduler.now(), 10u);
}

TEST(Scheduler, AnEventLetsOneThreadThroughAndAWaitEndsAtItsTime) {
    FirstComes scheduler;
    const HANDLE event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    std::vector<DWORD> ends;
    for (int i = 0; i < 2; ++i)
        scheduler.start([&] { ends.push_back(WaitForSingleObject(event, 1000)); });
    scheduler.start([&] { SetEvent(event); });
    EXPECT_TRUE(scheduler.run());
    EXPECT_EQ(ends, (std::vector<DWORD>{WAIT_OBJECT_0, WAIT_TIMEOUT}));
    EXPECT_EQ(scheduler.now(), 1000u);
    CloseHandle(event);
}

TEST(Scheduler, WhatWaitsForWhatNeverComesIsTold) {
    FirstComes scheduler;
    static int nothing;
    bool isLet = false;
    scheduler.start([&] { isLet = scheduler.wait(fibers::never, &nothing); });
    EXPECT_FALSE(scheduler.run());
    EXPECT_EQ(scheduler.describeTasks(), " thread 4 waits, locks 0;");
    scheduler.signal(&nothing, true);  // a fiber is not given up halfway
    EXPECT_TRUE(scheduler.run());
    EXPECT_TRUE(isLet);
}

TEST(Scheduler, EachThreadHasItsOwnExceptionUnderWay) {
    FirstComes scheduler;
    std::vector<std::string> seen;
    for (const char* const own : {"first", "second"})
        scheduler.start([&, own] {
            try {
                throw std::runtime_error(own);
            } catch (const std::exception&) {
                Sleep(5);
                try {
                    throw;
                } catch (const std::exception& again) {
                    seen.emplace_back(again.what());
                }
            }
        });
    EXPECT_TRUE(scheduler.run());
    EXPECT_EQ(seen, (std::vector<std::string>{"first", "second"}));
}

}  // namespace
