// Hosts bring declarations of their own for the two interfaces and for the queue, compiled long
// before this library: what they call is a place in a table, what they read is a place in memory.
#include "qorcontrol/HostInterfaces.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "qorcontrol/ThreadSafeQueue.h"

// With a name: of a class that only this file knows the compiler drops what it sees nobody call.
namespace old_host {

/// A host's own log: three operations, under its own names.
class Log {
public:
    virtual void first(const char*, ...) const { calls.push_back("first"); }
    virtual void second(const char*, ...) const { calls.push_back("second"); }
    virtual void third(const char*, ...) const { calls.push_back("third"); }

    mutable std::vector<std::string> calls;

protected:
    ~Log() = default;
};

class LogObject final : public Log {};

/// A host's own progress window: ten operations, under its own names.
class Monitor {
public:
    virtual void number1() { calls.push_back("1"); }
    virtual void number2() { calls.push_back("2"); }
    virtual void number3() { calls.push_back("3"); }
    virtual void number4() { calls.push_back("4"); }
    virtual void number5() { calls.push_back("5"); }
    virtual void number6() { calls.push_back("6"); }
    virtual bool number7() {
        calls.push_back("7");
        return true;
    }
    virtual void number8() { calls.push_back("8"); }
    virtual void number9() { calls.push_back("9"); }
    virtual void number10(const std::string& text, unsigned int code) {
        calls.push_back("10: " + text + " " + std::to_string(code));
    }

    std::vector<std::string> calls;

protected:
    ~Monitor() = default;
};

class MonitorObject final : public Monitor {};

}  // namespace old_host

namespace {

/// What the library makes of a pointer that it was given. The compiler must believe that anything
/// may have happened to the object: the two types know nothing of each other.
template <class Interface>
Interface* asGiven(const void* object) {
    __asm__ volatile("" : "+r"(object) : : "memory");
    return static_cast<Interface*>(const_cast<void*>(object));
}

std::uint32_t wordAt(const void* object, std::size_t offset) {
    std::uint32_t word = 0;
    std::memcpy(&word, static_cast<const char*>(object) + offset, sizeof word);
    return word;
}

bool flagAt(const void* object, std::size_t offset) {
    return static_cast<const unsigned char*>(object)[offset] != 0;
}

}  // namespace

TEST(HostInterfaces, ALogIsCalledAtItsSecondAndThirdOperation) {
    const old_host::LogObject host;
    const auto* const log = asGiven<const EolLog>(&host);
    log->info("%s", "request");
    log->error("%s", "failure");
    EXPECT_EQ(host.calls, (std::vector<std::string>{"second", "third"}));
}

TEST(HostInterfaces, AMonitorIsCalledAtItsSeventhAndTenthOperation) {
    old_host::MonitorObject host;
    auto* const monitor = asGiven<IProgressMonitor>(&host);
    EXPECT_TRUE(monitor->isCancelled());
    monitor->reportError("why", 0);
    EXPECT_EQ(host.calls, (std::vector<std::string>{"7", "10: why 0"}));
}

// A host's queue was compiled into the host: its push and pop and those of the library work on the
// same bytes.
TEST(QueueLayout, TheFieldsStandAtTheirPlaces) {
    ThreadSafeQueue<int> queue(3);
    const std::size_t lock = 8, event = 40, slots = 44, read = 56, write = 60;
    const std::size_t overflowed = 64, empty = 65;
    EXPECT_EQ(sizeof queue, 72u);
    EXPECT_EQ(sizeof(common::Lock), event - lock);
    EXPECT_EQ(wordAt(&queue, event), reinterpret_cast<std::uintptr_t>(queue.pushed().handle()));
    EXPECT_EQ(wordAt(&queue, slots + 4) - wordAt(&queue, slots), 3 * sizeof(int));
    EXPECT_TRUE(flagAt(&queue, empty));

    for (int item = 0; item < 4; ++item) queue.push(item);
    EXPECT_EQ(wordAt(&queue, read), 0u);
    EXPECT_EQ(wordAt(&queue, write), 1u);
    EXPECT_TRUE(flagAt(&queue, overflowed));
    EXPECT_FALSE(flagAt(&queue, empty));

    int item = 0;
    EXPECT_TRUE(queue.pop(item, 0));
    EXPECT_EQ(wordAt(&queue, read), 1u);
    EXPECT_TRUE(flagAt(&queue, empty));
}

TEST(QueueLayout, TheLockIsASectionAndTheFlagBehindIt) {
    common::Lock lock;
    EXPECT_TRUE(flagAt(&lock, 24));
    lock.release();
    EXPECT_FALSE(flagAt(&lock, 24));
}

// The compiler makes two of a destructor; what a derived class adds follows behind them.
TEST(QueueLayout, TheOnlyVirtualOperationIsTheDestructor) {
    struct Derived final : ThreadSafeQueue<int> {
        Derived() : ThreadSafeQueue(1) {}
        virtual int added() { return 7; }
    };
    Derived queue;
    using Operation = int(__thiscall*)(Derived*);
    const auto* const table = *reinterpret_cast<const Operation* const*>(&queue);
    EXPECT_EQ(table[2](&queue), 7);
}
