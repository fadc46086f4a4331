#include "cinterface/Process.h"
#include "facade/AttachTrace.h"

/// As in the library's other DLL. Besides, when it is unloaded while the process goes on (which
/// `reserved` tells), handles that the host has left open go here: their agents have ended then,
/// or their threads would keep the library loaded. At the end of the process nothing is touched.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_ATTACH) {
        attachtrace::traceAttach();
    } else if (reason == DLL_PROCESS_DETACH) {
        if (reserved == nullptr) cinterface::forgetProcess();
        attachtrace::traceDetach();
    }
    return TRUE;
}
