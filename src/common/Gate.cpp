#include "common/Gate.h"

#include <windows.h>

namespace common {

Gate::Gate() noexcept : handle_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}

Gate::~Gate() {
    if (handle_ != nullptr) CloseHandle(handle_);
}

void Gate::open() noexcept {
    if (handle_ != nullptr) SetEvent(handle_);
}

bool Gate::await(unsigned int timeoutMs) const noexcept {
    return handle_ != nullptr && WaitForSingleObject(handle_, timeoutMs) == WAIT_OBJECT_0;
}

}  // namespace common
