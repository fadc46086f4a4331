#include "common/Pump.h"

#include <windows.h>

namespace common {
namespace {

void translateAndDispatch(const MSG& message) {
    TranslateMessage(&message);
    DispatchMessageA(&message);
}

}  // namespace

void pumpCopyData() {
    MSG message;
    // Sent messages are delivered by the peek itself, which then reports nothing taken.
    while (PeekMessageA(&message, nullptr, WM_COPYDATA, WM_COPYDATA, PM_REMOVE)) {
        if (message.message == WM_QUIT) {  // comes through every filter; it is not ours to take
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        translateAndDispatch(message);
    }
}

void awaitSentMessage(unsigned int timeoutMs) {
    MsgWaitForMultipleObjectsEx(0, nullptr, timeoutMs, QS_SENDMESSAGE, MWMO_INPUTAVAILABLE);
}

void pumpOneMessage() {
    MSG message;
    if (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) translateAndDispatch(message);
}

}  // namespace common
