#include "Fibers.h"

#include <sys/mman.h>
#include <ucontext.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "Target.h"

#if defined(__SANITIZE_ADDRESS__)
#define FIBERS_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FIBERS_SANITIZED
#endif
#endif

#ifdef FIBERS_SANITIZED
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>
#endif

namespace fibers {
namespace {

constexpr std::size_t stackBytes = 256 * 1024;
constexpr std::uint64_t beginningMs = 1000000;
constexpr std::uint32_t noLimitMs = 0xFFFFFFFFu;
/// Waits are long, and what polls polls often: when all wait, so much passes at least.
constexpr std::uint64_t stepMs = 25;
constexpr int looksPerTurn = 4;
constexpr std::uint64_t patienceMs = 60000;

struct Stack {
    Stack()
        : bytes(static_cast<char*>(mmap(nullptr, stackBytes, PROT_READ | PROT_WRITE,
                                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        FUZZ_REQUIRE(bytes != MAP_FAILED);
    }
    ~Stack() { munmap(bytes, stackBytes); }
    Stack(const Stack&) = delete;
    Stack& operator=(const Stack&) = delete;

    char* const bytes;
};

struct Fiber {
    std::uint32_t number = 0;
    std::unique_ptr<Stack> stack;  // null: the program's own
    ucontext_t context{};
    std::function<void()> body;
    const std::function<bool()>* awaited = nullptr;  // null: it can run
    std::uint64_t dueMs = 0;
    bool hasLimit = false;
    bool hasEnded = false;
    int looks = 0;
    void* fakeStack = nullptr;
};

std::vector<std::unique_ptr<Fiber>> all;
std::vector<std::unique_ptr<Stack>> spareStacks;
Fiber* running = nullptr;
Fiber* before = nullptr;  // of the present switch
std::uint32_t lastNumber = 0;
std::uint64_t clockMs = beginningMs;
int locksHeld = 0;

#ifdef FIBERS_SANITIZED
const void* ownStack = nullptr;
std::size_t ownStackBytes = 0;

void beginSwitch(Fiber& from, const Fiber& to) {
    const bool isOwn = to.stack == nullptr;
    __sanitizer_start_switch_fiber(from.hasEnded ? nullptr : &from.fakeStack,
                                   isOwn ? ownStack : to.stack->bytes,
                                   isOwn ? ownStackBytes : stackBytes);
}

/// What ended there has left its marks.
void cleanStack(const Stack& stack) {
    __asan_unpoison_memory_region(stack.bytes, stackBytes);
}

void endSwitch(const Fiber& to) {
    const void* bottom = nullptr;
    std::size_t bytes = 0;
    __sanitizer_finish_switch_fiber(to.fakeStack, &bottom, &bytes);
    if (before->stack != nullptr) return;
    ownStack = bottom;
    ownStackBytes = bytes;
}
#else
void beginSwitch(Fiber&, const Fiber&) {}
void endSwitch(const Fiber&) {}
void cleanStack(const Stack&) {}
#endif

void switchTo(Fiber& next) {
    if (&next == running) return;
    Fiber& from = *running;
    before = running;
    running = &next;
    beginSwitch(from, next);
    swapcontext(&from.context, &next.context);
    endSwitch(from);
}

bool canRun(Fiber& fiber) {
    return !fiber.hasEnded && (fiber.awaited == nullptr || (*fiber.awaited)() ||
                               (fiber.hasLimit && fiber.dueMs <= clockMs));
}

/// The next in turn behind the running one that can; at last that one itself.
Fiber* nextInTurn() {
    const auto own = std::find_if(all.begin(), all.end(),
                                  [](const auto& each) { return each.get() == running; });
    const std::size_t place = static_cast<std::size_t>(own - all.begin());
    for (std::size_t i = 1; i <= all.size(); ++i) {
        Fiber& fiber = *all[(place + i) % all.size()];
        if (canRun(fiber)) return &fiber;
    }
    return nullptr;
}

void letTimePass() {
    bool isThereOne = false;
    std::uint64_t firstMs = 0;
    for (const auto& each : all) {
        if (each->hasEnded || !each->hasLimit) continue;
        firstMs = isThereOne ? std::min(firstMs, each->dueMs) : each->dueMs;
        isThereOne = true;
    }
    FUZZ_REQUIRE(isThereOne);  // else all wait for ever
    clockMs = std::max(firstMs, clockMs + stepMs);
}

void run() {
    Fiber* next = nextInTurn();
    while (next == nullptr) {
        letTimePass();
        next = nextInTurn();
    }
    switchTo(*next);
}

void enter() {
    endSwitch(*running);
    running->body();
    running->body = nullptr;
    running->hasEnded = true;
    run();
    fuzz::breakOff("a thread that has ended goes on", __FILE__, __LINE__);
}

/// Those that have ended, with their stacks for others.
void clearUp() {
    const auto isOver = [](const auto& each) { return each->hasEnded; };
    for (const auto& each : all)
        if (isOver(each)) spareStacks.push_back(std::move(each->stack));
    all.erase(std::remove_if(all.begin(), all.end(), isOver), all.end());
}

}  // namespace

void begin() {
    all.clear();
    all.push_back(std::make_unique<Fiber>());
    running = all.front().get();
    running->number = lastNumber = 1;
    clockMs = beginningMs;
    locksHeld = 0;
}

void end() {
    FUZZ_REQUIRE(wait(
        [] {
            return std::all_of(all.begin(), all.end(), [](const auto& each) {
                return each->hasEnded || each->stack == nullptr;
            });
        },
        patienceMs));
    clearUp();
}

std::uint32_t spawn(std::function<void()> body) {
    clearUp();
    auto fiber = std::make_unique<Fiber>();
    fiber->number = ++lastNumber;
    fiber->body = std::move(body);
    if (spareStacks.empty()) spareStacks.push_back(std::make_unique<Stack>());
    fiber->stack = std::move(spareStacks.back());
    spareStacks.pop_back();
    cleanStack(*fiber->stack);
    getcontext(&fiber->context);
    fiber->context.uc_stack.ss_sp = fiber->stack->bytes;
    fiber->context.uc_stack.ss_size = stackBytes;
    makecontext(&fiber->context, enter, 0);
    // With its size known the sanitizer would clean the whole stack at each switch.
    fiber->context.uc_stack.ss_size = 0;
    all.push_back(std::move(fiber));
    return lastNumber;
}

std::uint32_t current() {
    return running == nullptr ? 1 : running->number;
}

bool isThere(std::uint32_t number) {
    return std::any_of(all.begin(), all.end(),
                       [&](const auto& each) { return each->number == number && !each->hasEnded; });
}

std::uint64_t nowMs() {
    return clockMs;
}

bool wait(const std::function<bool()>& isDone, std::uint32_t timeoutMs) {
    FUZZ_REQUIRE(locksHeld == 0);
    if (running == nullptr || timeoutMs == 0) return isDone();
    Fiber& self = *running;
    self.looks = 0;
    self.awaited = &isDone;
    self.hasLimit = timeoutMs != noLimitMs;
    self.dueMs = clockMs + timeoutMs;
    run();
    self.awaited = nullptr;
    self.hasLimit = false;
    return isDone();
}

void noteLook() {
    if (running == nullptr || locksHeld != 0 || ++running->looks < looksPerTurn) return;
    wait([] { return false; }, 1);
}

void noteLocked(int difference) {
    locksHeld += difference;
}

}  // namespace fibers
