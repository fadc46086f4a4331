#include "transport/WindowPlatform.h"

namespace {

/// Of a message to `window` that has failed with this code of the system's.
MessageEnd endOf(HWND window, DWORD error) {
    if (error == ERROR_ACCESS_DENIED) return MessageEnd::forbidden;
    if (error == ERROR_INVALID_WINDOW_HANDLE) return MessageEnd::gone;
    const bool isHung = IsHungAppWindow(window) != FALSE;
    SetLastError(error);
    return isHung ? MessageEnd::hung : MessageEnd::late;
}

}  // namespace

HWND WindowPlatform::findWindow(const std::string& title) {
    // Without a title the system would find any of the many windows that have none.
    return title.empty() ? nullptr : FindWindowA(nullptr, title.c_str());
}

unsigned long WindowPlatform::processOf(HWND window) {
    DWORD process = 0;
    return GetWindowThreadProcessId(window, &process) != 0 ? process : 0;
}

MessageEnd WindowPlatform::sendCopyData(HWND window, unsigned long tag, const std::string& bytes,
                                        unsigned int flags, unsigned int timeoutMs,
                                        unsigned long& result) {
    COPYDATASTRUCT record = {};
    record.dwData = tag;
    record.cbData = static_cast<DWORD>(bytes.size());
    record.lpData = const_cast<char*>(bytes.data());  // the system only reads it
    DWORD_PTR answer = 0;
    // A success leaves the code as it is, so that only a failure's own code tells of a time-out.
    SetLastError(ERROR_TIMEOUT);
    const LRESULT sent = SendMessageTimeoutA(
        window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record), flags, timeoutMs, &answer);
    result = answer;
    return sent != 0 ? MessageEnd::handled : endOf(window, GetLastError());
}

bool WindowPlatform::holdsSender() {
    const DWORD state = InSendMessageEx(nullptr);
    return (state & (ISMEX_REPLIED | ISMEX_SEND)) == ISMEX_SEND;
}

void WindowPlatform::releaseSender(long result) {
    ReplyMessage(result);
}
