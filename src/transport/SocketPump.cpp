#include "transport/SocketPump.h"

#include "framework/AsyncSocket.h"
#include "qorcontrol/Event.h"

namespace {

// A peer that sends without pause would otherwise keep the pump busy, and parsing would wait.
constexpr int maxNotificationsPerPump = 64;

}  // namespace

void pumpSocketNotifications(const common::Event* wakeUp) {
    HANDLE handle = wakeUp != nullptr ? wakeUp->handle() : nullptr;
    const DWORD handles = handle != nullptr ? 1 : 0;
    const DWORD reason =
        MsgWaitForMultipleObjectsEx(handles, &handle, 1, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    if (reason != WAIT_OBJECT_0 + handles) return;  // nothing came, or only the wake-up
    for (int taken = 0; taken < maxNotificationsPerPump; ++taken) {
        MSG message;
        if (!PeekMessageA(&message, nullptr, socketNotifyMessage, socketDeadMessage, PM_REMOVE))
            return;
        if (message.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        DispatchMessageA(&message);
    }
}
