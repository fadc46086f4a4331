#pragma once

#include <memory>
#include <new>

namespace common {

/// A pointer of each thread's own, which the system hands to `release` at the end of the thread,
/// and when the slot goes for all threads that still have one. Unlike `thread_local` it costs a
/// thread nothing that never uses it, and it may come and go with the library.
class ThreadSlot {
public:
    using Release = void(__stdcall*)(void* content);

    /// `release` must wait for nobody.
    explicit ThreadSlot(Release release) noexcept;
    ~ThreadSlot();
    ThreadSlot(const ThreadSlot&) = delete;
    ThreadSlot& operator=(const ThreadSlot&) = delete;

    /// Null until it is set.
    void* get() const noexcept;
    /// False if the system has no place for it.
    bool set(void* content) noexcept;

private:
    unsigned long index_;
};

/// A T for each thread that asks for one.
template <class T>
class ThreadOwned {
public:
    /// The calling thread's; made at the first call. Throws std::bad_alloc if there is no room.
    T& get() {
        if (auto* const own = static_cast<T*>(slot_.get())) return *own;
        auto made = std::make_unique<T>();
        if (!slot_.set(made.get())) throw std::bad_alloc();
        return *made.release();
    }

    /// The same if it is there already; else null.
    T* find() const noexcept { return static_cast<T*>(slot_.get()); }

private:
    static void __stdcall release(void* content) { delete static_cast<T*>(content); }

    ThreadSlot slot_{&release};
};

}  // namespace common
