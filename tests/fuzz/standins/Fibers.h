#pragma once

#include <cstdint>
#include <functional>

/// Threads that run in turns on the one of the program, and a clock that jumps: an execution is the
/// same each time, no wait costs time, and of a wait for ever the process breaks off. The kernel
/// calls of the library (FiberKernel.cpp) are made of these. The program's own thread is the first.
///
/// A thread runs until it waits. It must not wait while it holds a lock: that is checked.
namespace fibers {

/// Begins an execution: no thread but this one, and a clock far from its wrap.
void begin();

/// Lets the others run to their end; breaks off if one is still there after a minute of its clock.
void end();

/// Its number, which no other thread of an execution ever has.
std::uint32_t spawn(std::function<void()> body);
std::uint32_t current();
bool isThere(std::uint32_t number);

std::uint64_t nowMs();

/// Until `isDone`, which is asked whenever another thread has run; at most so long. Whether it is.
bool wait(const std::function<bool()>& isDone, std::uint32_t timeoutMs);

/// Threads that only look at the clock let others run, too.
void noteLook();

void noteLocked(int difference);

}  // namespace fibers
