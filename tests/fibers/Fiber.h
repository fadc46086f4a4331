#pragma once

#include <cstddef>
#include <functional>
#include <optional>

#include "Stack.h"

namespace fibers {

/// A stack of its own for a piece of code that is entered and left by hand. Exactly one of all
/// fibers and the code that enters them runs at a time, on the one thread of the process, so
/// nothing here is ever interrupted.
class Fiber {
public:
    explicit Fiber(std::function<void()> body);
    /// The body has ended or was never begun.
    ~Fiber() = default;
    Fiber(const Fiber&) = delete;
    Fiber& operator=(const Fiber&) = delete;

    /// Goes on with the body until it leaves or ends. Throws std::bad_alloc if there is no stack
    /// for it to begin on.
    void enter();
    /// On the fiber itself: goes on behind its `enter`.
    void leave();

    bool hasEnded() const { return hasEnded_; }

private:
    [[noreturn]] static void begin();
    void prepareStack();

    /// What the language's run-time library keeps of the exceptions that are under way.
    struct Exceptions {
        void* caught = nullptr;
        unsigned int uncaught = 0;
    };
    static void exchangeExceptions(Exceptions& kept);

    const std::function<void()> body_;
    std::optional<Stack> stack_;  // from the first time it is entered to its end
    void* ownTop_ = nullptr;      // of the stack, while the fiber is left
    void* otherTop_ = nullptr;    // of the stack of who has entered
    Exceptions exceptions_;       // of the side that does not run
    bool hasEnded_ = false;

    // What the address sanitizer wants to know.
    void* fakeStack_ = nullptr;
    const void* otherBottom_ = nullptr;
    std::size_t otherBytes_ = 0;
};

}  // namespace fibers
