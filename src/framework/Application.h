#pragma once

#include <windows.h>

/// The part of the framework's application support that the library needs: initialisation, module
/// state, and the user-interface thread's main window. It has the framework's own names, and more
/// arguments and members than are looked at here, so that a build that has the framework can
/// include its header instead.

class CWnd;

/// The handles under which the framework finds the application's instance and resources. Here they
/// are only kept: no part of the framework that would look at them is needed.
class AFX_MODULE_STATE {
public:
    ~AFX_MODULE_STATE();

    /// Makes the activation context of the instance's manifest; without a manifest there is none.
    void CreateActivationContext();

    HINSTANCE m_hCurrentInstanceHandle = nullptr;
    HINSTANCE m_hCurrentResourceHandle = nullptr;  // for the framework's dialogs; none here
    HANDLE m_hActCtx = INVALID_HANDLE_VALUE;
};

/// The one module state of the library; changed only while the client is created.
AFX_MODULE_STATE* AfxGetModuleState();

/// Makes the library an application of its own. FALSE without an instance. The other arguments are
/// for a main window, which the library does not have.
BOOL AfxWinInit(HINSTANCE instance, HINSTANCE previousInstance, char* commandLine, int showCommand);

/// A user-interface thread of the framework.
class CWinThread {
public:
    CWnd* m_pMainWnd = nullptr;
};

/// The user-interface thread object of the calling thread; null if the thread is none.
CWinThread* AfxGetThread();

/// Makes the calling thread a user-interface thread (null: no longer one). Not owned. Nothing in
/// the library calls it: with the real framework a host's own threads are such ones.
void AfxSetThread(CWinThread* thread);

/// The module that this code is linked into: the DLL, or a test program.
HINSTANCE AfxThisModule();
