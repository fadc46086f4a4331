/* What the compiler's stack protector and its checked copies call, for each of our DLLs and programs.
 *
 * gcc brings one along, but it asks the system's cryptography for its random number: that loads
 * further DLLs while ours is being loaded, which the loader forbids, and leaves handles behind. The
 * guard here is mixed of what differs from start to start, as other compilers for Windows do it. */
#include <stdint.h>
#include <windows.h>

enum { stackBufferOverrun = (int)0xC0000409 };

uintptr_t __stack_chk_guard = 0xBB40E64Eu; /* until it has been mixed, which is before all code of ours */

/* Runs before other constructors; it must not be protected itself: its guard changes meanwhile. */
__attribute__((constructor(101), optimize("no-stack-protector"))) static void mixGuard(void) {
    LARGE_INTEGER counter;
    FILETIME now;
    uintptr_t mixed = (uintptr_t)&mixed;
    QueryPerformanceCounter(&counter);
    GetSystemTimeAsFileTime(&now);
    mixed ^= (uintptr_t)counter.LowPart * 0x9E3779B1u ^ (uintptr_t)counter.HighPart;
    mixed = (mixed << 13 | mixed >> 19) ^ now.dwLowDateTime ^ now.dwHighDateTime;
    mixed = (mixed << 7 | mixed >> 25) ^ GetCurrentProcessId() ^ (uintptr_t)GetCurrentThreadId() << 16;
    /* Its lowest byte in memory is zero: a text that overruns its buffer cannot write the right one. */
    mixed &= ~(uintptr_t)0xFF;
    if (mixed != 0) __stack_chk_guard = mixed;
}

/* The stack, or what lies behind a buffer, is not to be trusted: nothing is unwound, no handler of
 * the process is asked, and only the system's report of crashes is made. */
static _Noreturn void end(void) {
    CONTEXT context;
    EXCEPTION_RECORD record = {.ExceptionCode = stackBufferOverrun,
                               .ExceptionFlags = EXCEPTION_NONCONTINUABLE,
                               .ExceptionAddress = __builtin_return_address(0)};
    EXCEPTION_POINTERS pointers = {&record, &context};
    RtlCaptureContext(&context);
    SetUnhandledExceptionFilter(NULL);
    UnhandledExceptionFilter(&pointers);
    TerminateProcess(GetCurrentProcess(), stackBufferOverrun);
    for (;;) {
    }
}

_Noreturn void __stack_chk_fail(void) {
    end();
}

_Noreturn void __chk_fail(void) {
    end();
}
