#pragma once

#include <windows.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace desktop {

class ThreadQueue;

/// A message that its sender waits for, with a copy of the bytes that go with it.
struct Sent {
    HWND window = nullptr;
    UINT message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;  // of a message that carries no bytes
    bool hasRecord = false;
    std::uintptr_t tag = 0;
    std::string bytes;
    std::shared_ptr<ThreadQueue> sender;

    // The outcome, guarded by the sender's queue until there is one.
    enum State { waiting, handled, lost, late } state = waiting;
    LRESULT result = 0;
};

/// The messages of one thread. Its lock is held for a few copies, never while a window procedure
/// runs and never together with that of another queue.
class ThreadQueue {
public:
    using Ms = std::chrono::milliseconds;
    using Until = std::chrono::steady_clock::time_point;

    /// The calling thread's own; it ends with the thread, and with it the thread's windows.
    static const std::shared_ptr<ThreadQueue>& own();

    /// @name By any thread
    /// @{
    /// False if the thread has ended.
    bool post(const MSG& message);
    bool send(const std::shared_ptr<Sent>& message);
    /// Ends a message of this thread's own, unless it has an outcome already.
    void finish(Sent& message, Sent::State state, LRESULT result = 0);
    /// Whether the thread has not looked for messages for seconds.
    bool hangs() const;
    /// @}

    /// @name By the thread itself
    /// @{
    std::shared_ptr<Sent> takeSent();
    /// Takes the first that was posted and fits; a quit message comes behind all others.
    bool takePosted(MSG& message, HWND window, UINT lowest, UINT highest);
    void quit(int exitCode);
    bool isEmpty();
    /// Until there is a message.
    void wait(Until until);
    /// Until `message` of this thread has an outcome (then true) or, if it takes some meanwhile,
    /// there is one sent to it.
    bool awaitOutcome(const Sent& message, bool takesSent, Until until);
    /// Forgets what waits for a window that is gone.
    void dropAllOf(HWND window);
    void noteLook();
    void end();
    /// @}

private:
    std::deque<std::shared_ptr<Sent>> takeAllSent(HWND window);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<MSG> posted_;
    std::deque<std::shared_ptr<Sent>> sent_;
    bool quits_ = false;
    bool ended_ = false;
    WPARAM exitCode_ = 0;
    std::atomic<std::int64_t> lastLookMs_{0};
};

}  // namespace desktop
