#include "facade/AttachTrace.h"

/// The library's attach and detach hook. It only traces: the agent thread cannot be stopped from
/// here, because a thread cannot end while the system holds the lock under which this runs. Nor
/// need it be: each thread of the library keeps it loaded. So a detach is the host's `FreeLibrary`,
/// the end of a thread that the host has outwaited, or the end of the process.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH)
        attachtrace::traceAttach();
    else if (reason == DLL_PROCESS_DETACH)
        attachtrace::traceDetach();
    return TRUE;
}
