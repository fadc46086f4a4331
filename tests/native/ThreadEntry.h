#pragma once

#include <windows.h>

namespace native {

/// The whole of a thread of the library; its exit code, also where it ends without returning.
DWORD runThread(unsigned (*entry)(void*), void* argument);

}  // namespace native
