// A library whose thread is still busy when the library is freed.

#include "ThreadProbe.h"

#include <windows.h>

#include "common/Thread.h"

namespace {

struct Ending {
    HANDLE event = nullptr;
    unsigned long* onThread = nullptr;

    ~Ending() {
        if (event == nullptr) return;
        *onThread = GetCurrentThreadId();
        SetEvent(event);
    }
} ending;

unsigned __stdcall work(void* argument) {
    auto& work = *static_cast<ProbeWork*>(argument);
    HANDLE const process = GetCurrentProcess();
    DuplicateHandle(process, GetCurrentThread(), process, &work.thread, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    const unsigned exitCode = work.exitCode;
    SetEvent(work.begun);
    WaitForSingleObject(work.mayEnd, INFINITE);
    return exitCode;
}

}  // namespace

bool startThreadInLibrary(ProbeWork* given) {
    common::Thread thread;
    return thread.start(work, given);
}

void tellTheEnd(void* event, unsigned long* onThread) {
    ending.event = event;
    ending.onThread = onThread;
}
