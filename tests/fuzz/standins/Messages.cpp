// The window framework and the pump of copy-data messages on a window that is none of the system's.
#include "Messages.h"

#include "common/LastError.h"
#include "common/Pump.h"
#include "fibers/Scheduler.h"
#include "framework/Window.h"
#include "Target.h"

namespace {

CWnd* theWindow = nullptr;

/// Opens what only windows of this kind may call.
class Dispatching : public CWnd {
public:
    static const AFX_MSGMAP* mapOf(const CWnd& window) {
        return (window.*(&Dispatching::GetMessageMap))();
    }
};

}  // namespace

std::function<void()> messages::onPump;

LRESULT messages::deliver(COPYDATASTRUCT* record) {
    FUZZ_REQUIRE(theWindow != nullptr);
    const AFX_MSGMAP* map = Dispatching::mapOf(*theWindow);
    for (const AFX_MSGMAP_ENTRY* entry = map->entries; entry->dispatch != nullptr; ++entry)
        if (entry->nMessage == WM_COPYDATA)
            return entry->dispatch(*theWindow, 0, reinterpret_cast<LPARAM>(record));
    fuzz::breakOff("the window takes no copy-data messages", __FILE__, __LINE__);
}

void common::pumpCopyData() {
    if (messages::onPump != nullptr) messages::onPump();
    fibers::Scheduler::present().lookAtClock();  // who pumps without end lets others run, too
}

void common::pumpOneMessage() {
    pumpCopyData();
}

void common::awaitSentMessage(unsigned int) {
    fibers::Scheduler::present().lookAtClock();
}

CWnd::~CWnd() {
    CWnd::DestroyWindow();
}

BOOL CWnd::CreateEx(DWORD, const char* className, const char*, DWORD, int, int, int, int, HWND,
                    HMENU) {
    FUZZ_REQUIRE(className != nullptr && theWindow == nullptr);
    theWindow = this;
    m_hWnd = this;
    return TRUE;
}

BOOL CWnd::DestroyWindow() {
    if (theWindow == this) theWindow = nullptr;
    return TRUE;
}

CWnd* CWnd::FromHandle(HWND) {
    return nullptr;  // QOR's is no window of this program
}

void CWnd::BeginModalState() {}

void CWnd::EndModalState() {}

const AFX_MSGMAP* CWnd::GetMessageMap() const {
    return GetThisMessageMap();
}

const AFX_MSGMAP* CWnd::GetThisMessageMap() {
    static const AFX_MSGMAP_ENTRY entries[] = {{0, nullptr}};
    static const AFX_MSGMAP map = {nullptr, entries};
    return &map;
}

const char* AfxRegisterWndClass(UINT, HCURSOR, HBRUSH, HICON) {
    return "class";
}

BOOL EnableWindow(HWND, BOOL) noexcept {
    return TRUE;
}

common::KeptLastError::KeptLastError() : code_(GetLastError()) {}

common::KeptLastError::~KeptLastError() {
    SetLastError(static_cast<DWORD>(code_));
}
