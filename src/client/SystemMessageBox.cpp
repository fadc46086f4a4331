#include "client/SystemMessageBox.h"

#include "framework/Application.h"
#include "framework/Window.h"

namespace {

HWND chooseOwner() {
    const CWinThread* const thread = AfxGetThread();
    if (thread != nullptr && thread->m_pMainWnd != nullptr && thread->m_pMainWnd->m_hWnd != nullptr)
        return thread->m_pMainWnd->m_hWnd;
    return GetForegroundWindow();
}

}  // namespace

unsigned int SystemMessageBox::show(const std::string& text, const std::string& caption,
                                    unsigned int type) {
    const int choice = MessageBoxA(chooseOwner(), text.c_str(), caption.c_str(), type);
    return static_cast<unsigned int>(choice);
}
