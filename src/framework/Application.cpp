#include "framework/Application.h"

namespace {

thread_local CWinThread* currentThread = nullptr;

}  // namespace

AFX_MODULE_STATE::~AFX_MODULE_STATE() {
    if (m_hActCtx != INVALID_HANDLE_VALUE) ReleaseActCtx(m_hActCtx);
}

void AFX_MODULE_STATE::CreateActivationContext() {
    if (m_hActCtx != INVALID_HANDLE_VALUE) return;
    char module[MAX_PATH] = "";
    GetModuleFileNameA(m_hCurrentInstanceHandle, module, sizeof module - 1);
    ACTCTXA context = {};
    context.cbSize = sizeof context;
    context.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID | ACTCTX_FLAG_HMODULE_VALID;
    context.lpSource = module;
    context.lpResourceName = MAKEINTRESOURCEA(1);  // the manifest of an executable
    context.hModule = m_hCurrentInstanceHandle;
    m_hActCtx = CreateActCtxA(&context);
}

AFX_MODULE_STATE* AfxGetModuleState() {
    static AFX_MODULE_STATE state;
    return &state;
}

BOOL AfxWinInit(HINSTANCE instance, HINSTANCE, char*, int) {
    if (instance == nullptr) return FALSE;
    AFX_MODULE_STATE* const state = AfxGetModuleState();
    state->m_hCurrentInstanceHandle = instance;
    state->m_hCurrentResourceHandle = instance;
    return TRUE;
}

CWinThread* AfxGetThread() {
    return currentThread;
}

void AfxSetThread(CWinThread* thread) {
    currentThread = thread;
}

HINSTANCE AfxThisModule() {
    HMODULE module = nullptr;
    GetModuleHandleExA(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<const char*>(&AfxThisModule), &module);
    return module;
}
