#pragma once

#include <windows.h>

#include <cstdint>

namespace simulator {

/// A program with a message queue has to empty it; the first look at it also tells a waiting
/// starter that the program is ready. Messages that others send are handled on the way.
void handleMessages();

/// Without an event: pass null.
void waitForEventOrMessage(HANDLE event, std::uint32_t timeoutMs);

}  // namespace simulator
