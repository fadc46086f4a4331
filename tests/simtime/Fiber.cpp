#include "Fiber.h"

#include <cxxabi.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif

/// Keeps the stack pointer and all registers that a callee must keep, and goes on where the other
/// stack was left.
extern "C" void simtimeSwitchStacks(void** saved, void* other);

#if defined(__x86_64__)
asm(R"(
.text
.globl simtimeSwitchStacks
.type simtimeSwitchStacks, @function
simtimeSwitchStacks:
    pushq %rbp
    pushq %rbx
    pushq %r12
    pushq %r13
    pushq %r14
    pushq %r15
    movq %rsp, (%rdi)
    movq %rsi, %rsp
    popq %r15
    popq %r14
    popq %r13
    popq %r12
    popq %rbx
    popq %rbp
    ret
.size simtimeSwitchStacks, .-simtimeSwitchStacks
)");
#else
#error "another processor needs its own switch of stacks"
#endif

namespace simtime {
namespace {

constexpr std::size_t stackBytes = 512 * 1024;
/// The registers that the switch takes from a new stack.
constexpr std::size_t keptRegisters = 6;

Fiber* entered = nullptr;

#if defined(__SANITIZE_ADDRESS__)
void beginSwitch(void** fakeStack, const void* bottom, std::size_t bytes) {
    __sanitizer_start_switch_fiber(fakeStack, bottom, bytes);
}
void endSwitch(void* fakeStack, const void** bottom, std::size_t* bytes) {
    __sanitizer_finish_switch_fiber(fakeStack, bottom, bytes);
}
#else
void beginSwitch(void**, const void*, std::size_t) {}
void endSwitch(void*, const void**, std::size_t*) {}
#endif

}  // namespace

Fiber::Fiber(std::function<void()> body) : body_(std::move(body)) {
    stack_ = mmap(nullptr, stackBytes, PROT_READ | PROT_WRITE,
                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (stack_ == MAP_FAILED) throw std::bad_alloc();
    // As if the switch had been called right before the first instruction of `begin`, with the
    // alignment that a call leaves.
    auto* const top = static_cast<void**>(stack_) + stackBytes / sizeof(void*);
    top[-2] = reinterpret_cast<void*>(&Fiber::begin);
    ownTop_ = top - 2 - keptRegisters;
}

Fiber::~Fiber() {
    munmap(stack_, stackBytes);
}

void Fiber::exchangeExceptions(Exceptions& kept) {
    auto* const present = reinterpret_cast<Exceptions*>(abi::__cxa_get_globals());
    std::swap(*present, kept);
}

void Fiber::enter() {
    entered = this;
    exchangeExceptions(exceptions_);
    void* fakeStack = nullptr;
    beginSwitch(&fakeStack, stack_, stackBytes);
    simtimeSwitchStacks(&otherTop_, ownTop_);
    endSwitch(fakeStack, nullptr, nullptr);
    exchangeExceptions(exceptions_);
    entered = nullptr;
}

void Fiber::leave() {
    beginSwitch(hasEnded_ ? nullptr : &fakeStack_, otherBottom_, otherBytes_);
    simtimeSwitchStacks(&ownTop_, otherTop_);
    endSwitch(fakeStack_, &otherBottom_, &otherBytes_);
}

void Fiber::begin() {
    Fiber& self = *entered;
    endSwitch(nullptr, &self.otherBottom_, &self.otherBytes_);
    self.body_();
    self.hasEnded_ = true;
    self.leave();
    std::abort();  // nobody enters it again
}

}  // namespace simtime
