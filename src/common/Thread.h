#pragma once

#include <atomic>
#include <memory>

namespace common {

/// What asking the system for a thread's exit code gave.
enum class ThreadState { running, ended, unreadable };

/// A thread of the system's run-time library, held by its handle.
///
/// The handle can outlive the thread and the thread the handle: closing the handle neither stops
/// the thread nor waits for it. Whoever owns the object says when to close it; the destructor
/// closes what is still open. `start` and `close` belong to one thread, the questions to any.
///
/// The thread holds a reference on the module that holds its code, so a library that lets a thread
/// go and is then freed by its host stays loaded until that thread has ended. If that was the last
/// reference, the library is unloaded on that very thread: the destructors of its static objects
/// run there. By the time `state` tells that the thread has ended the reference is given back;
/// `isRunning` can tell it a moment earlier.
class Thread {
public:
    using Entry = unsigned(__stdcall*)(void*);

    Thread() = default;
    ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Starts `entry(argument)` with the default stack size, once per object. On failure there is
    /// no handle and the last-error code tells why.
    bool start(Entry entry, void* argument);

    bool hasHandle() const noexcept { return handle_ != 0; }

    /// Asks the system, which costs a kernel call. `unreadable` leaves the reason in the
    /// last-error code.
    ThreadState state() const noexcept;

    /// Whether there is a handle and the entry has not returned. Costs nothing: the thread itself
    /// notes its end.
    bool isRunning() const noexcept { return hasHandle() && !life_->ended; }

    /// Lets the thread go; afterwards there is no handle, whatever the system answered.
    bool close() noexcept;

private:
    /// Shared with the thread, which may outlive this object.
    struct Life {
        Entry entry = nullptr;
        void* argument = nullptr;
        std::atomic<bool> ended{false};
    };

    /// What the thread takes with it.
    struct Luggage;

    static unsigned __stdcall run(void* luggage);

    std::shared_ptr<Life> life_ = std::make_shared<Life>();
    std::atomic<unsigned long> handle_{0};
};

unsigned int currentThreadId() noexcept;

/// Whether there is no such thread in this process any more. In doubt there still is.
bool hasThreadEnded(unsigned int id) noexcept;

}  // namespace common
