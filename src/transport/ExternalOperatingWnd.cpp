#include "transport/ExternalOperatingWnd.h"

#include "transport/ExternalCommandFactory.h"

BEGIN_MESSAGE_MAP(ExternalOperatingWnd, CWnd)
ON_WM_COPYDATA()
END_MESSAGE_MAP()

bool ExternalOperatingWnd::create(const char* title) {
    const char* const className = AfxRegisterWndClass(0);
    return className != nullptr && CreateEx(0, className, title, 0, 0, 0, 0, 0, nullptr, nullptr);
}

BOOL ExternalOperatingWnd::OnCopyData(CWnd*, COPYDATASTRUCT* record) {
    return factory_.onCopyData(record);
}

void ExternalOperatingWnd::BeginModalState() {
    EnableWindow(m_hWnd, FALSE);
}

void ExternalOperatingWnd::EndModalState() {
    EnableWindow(m_hWnd, TRUE);
}
