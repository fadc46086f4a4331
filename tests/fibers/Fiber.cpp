#include "Fiber.h"

#include <cxxabi.h>

#include <cstdlib>
#include <utility>

#include "Sanitizer.h"
#include "Switch.h"

namespace fibers {
namespace {

Fiber* entered = nullptr;

}  // namespace

Fiber::Fiber(std::function<void()> body) : body_(std::move(body)) {}

void Fiber::prepareStack() {
    stack_.emplace();
    // As if the switch had been called right before the first instruction of `begin`, with the
    // alignment that a call leaves. Behind the return address of 0 nobody looks for callers.
    void** const top = stack_->top();
    top[-1] = nullptr;
    top[-2] = reinterpret_cast<void*>(&Fiber::begin);
    for (int i = 1; i <= keptRegisters; ++i) top[-2 - i] = nullptr;
    ownTop_ = top - 2 - keptRegisters;
}

void Fiber::exchangeExceptions(Exceptions& kept) {
    auto* const present = reinterpret_cast<Exceptions*>(abi::__cxa_get_globals());
    std::swap(*present, kept);
}

void Fiber::enter() {
    if (!stack_) prepareStack();
    entered = this;
    exchangeExceptions(exceptions_);
    void* fakeStack = nullptr;
    sanitizer::beginSwitch(&fakeStack, stack_->bottom(), Stack::bytes);
    fibersSwitchStacks(&otherTop_, ownTop_);
    sanitizer::endSwitch(fakeStack, nullptr, nullptr);
    exchangeExceptions(exceptions_);
    entered = nullptr;
    if (hasEnded_) stack_.reset();
}

void Fiber::leave() {
    sanitizer::beginSwitch(hasEnded_ ? nullptr : &fakeStack_, otherBottom_, otherBytes_);
    fibersSwitchStacks(&ownTop_, otherTop_);
    sanitizer::endSwitch(fakeStack_, &otherBottom_, &otherBytes_);
}

void Fiber::begin() {
    Fiber& self = *entered;
    sanitizer::endSwitch(nullptr, &self.otherBottom_, &self.otherBytes_);
    self.body_();
    self.hasEnded_ = true;
    self.leave();
    std::abort();  // nobody enters it again
}

}  // namespace fibers
