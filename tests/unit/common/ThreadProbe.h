#pragma once

/// What a thread of the probe library is given by the program that loads it.
struct ProbeWork {
    void* begun;        ///< event: the thread runs
    void* mayEnd;       ///< event: the thread shall end
    unsigned exitCode;  ///< with which
    void* thread;       ///< out: a handle of the thread; the program closes it
};

/// Starts a thread of the library and lets it go; `work` must outlive it. False if that failed.
extern "C" __declspec(dllexport) bool startThreadInLibrary(ProbeWork* work);

/// An event that the library signals when its static objects are destroyed.
extern "C" __declspec(dllexport) void tellTheEnd(void* event, unsigned long* onThread);
