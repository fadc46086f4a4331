#pragma once

#include <windows.h>

/// The part of the framework's application support that the library needs, under the framework's
/// own names: initialisation, module state, and the user-interface thread's main window.

class CWnd;

/// The handles under which the framework finds the application's instance and resources. Here they
/// are only kept: no part of the framework that would look at them is needed.
class AFX_MODULE_STATE {
public:
    ~AFX_MODULE_STATE();

    /// Makes the activation context of the instance's manifest; without a manifest there is none.
    void CreateActivationContext();

    HINSTANCE m_hCurrentInstanceHandle = nullptr;
    HINSTANCE m_hCurrentResourceHandle = nullptr;
    HANDLE m_hActCtx = INVALID_HANDLE_VALUE;
};

/// The one module state of the library; changed only while the client is created.
AFX_MODULE_STATE* AfxGetModuleState();

/// Makes the library an application of its own. FALSE without an instance. All else is the
/// framework's affair and unused.
BOOL AfxWinInit(HINSTANCE instance, HINSTANCE previousInstance, char* commandLine, int showCommand);

/// A user-interface thread of the framework.
class CWinThread {
public:
    CWnd* m_pMainWnd = nullptr;
};

/// The user-interface thread object of the calling thread; null if the thread is none.
CWinThread* AfxGetThread();

/// Makes the calling thread a user-interface thread (null: no longer one). Not owned. No thread of
/// the library is one; tests make theirs.
void AfxSetThread(CWinThread* thread);

/// The module that this code is linked into: the DLL, or a test program.
HINSTANCE AfxThisModule();
