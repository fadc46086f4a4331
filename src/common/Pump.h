#pragma once

namespace common {

/// Takes and dispatches the calling thread's pending copy-data messages, and only those, without
/// waiting. Copy-data messages that other processes sent to a window of this thread are handled
/// inside this call.
void pumpCopyData();

/// Waits, at most so long, until another thread's message to a window of the calling thread is
/// there to be handled.
void awaitSentMessage(unsigned int timeoutMs);

/// Takes at most one pending message of any kind, translates and dispatches it, without waiting.
/// A quit message is taken like any other.
void pumpOneMessage();

}  // namespace common
