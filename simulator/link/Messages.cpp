#include "link/Messages.h"

namespace simulator {

void handleMessages() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) DispatchMessageA(&message);
}

void waitForEventOrMessage(HANDLE event, std::uint32_t timeoutMs) {
    MsgWaitForMultipleObjectsEx(event != nullptr ? 1 : 0, event != nullptr ? &event : nullptr,
                                timeoutMs, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
}

}  // namespace simulator
