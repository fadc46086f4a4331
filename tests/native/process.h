#pragma once

#include <cstdint>

/// The start of a thread by the system's run-time library. Of the arguments only the entry and its
/// argument count. 0 if there are no threads left.
std::uintptr_t _beginthreadex(void* security, unsigned stackBytes, unsigned (*entry)(void*),
                              void* argument, unsigned flags, unsigned* threadId);
