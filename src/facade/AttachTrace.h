#pragma once

#include <windows.h>

#include "trace/Trace.h"

/// What a DLL that holds the library traces when a program loads it, and when it goes.
namespace attachtrace {

inline void traceAttach() {
    tracelog::loadSettings("QorControlFacade.cfg");
    const tracelog::Scope scope(tracelog::libraryModule, "DllMain()\n");
    tracelog::trace(tracelog::libraryModule, tracelog::information, 0,
                    "Attach to the process: %X\n", static_cast<unsigned int>(GetCurrentThreadId()));
}

inline void traceDetach() {
    tracelog::trace(tracelog::libraryModule, tracelog::information, 0,
                    "Detach from the process: %X\n",
                    static_cast<unsigned int>(GetCurrentThreadId()));
}

}  // namespace attachtrace
