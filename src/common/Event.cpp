#include "qorcontrol/Event.h"

#include <windows.h>

namespace common {

Event::Event() noexcept : handle_(CreateEventA(nullptr, FALSE, FALSE, nullptr)) {}

Event::~Event() {
    if (handle_ != nullptr) CloseHandle(handle_);
}

void Event::signal() noexcept {
    if (handle_ != nullptr) SetEvent(handle_);
}

void Event::reset() noexcept {
    if (handle_ != nullptr) ResetEvent(handle_);
}

bool Event::wait(unsigned int timeoutMs) noexcept {
    return handle_ != nullptr && WaitForSingleObject(handle_, timeoutMs) == WAIT_OBJECT_0;
}

}  // namespace common
