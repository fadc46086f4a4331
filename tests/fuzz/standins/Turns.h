#pragma once

#include <functional>

#include "fibers/Scheduler.h"

/// The fuzzers' policy: threads run in turns and the clock jumps, so an execution is the same each
/// time and no wait costs time. A finding breaks the process off, and so does a wait for ever.
namespace turns {

/// An execution: `body` as its first thread, no other, and a clock far from its wrap. Breaks off if
/// a thread is still there a minute of that clock behind the end of `body`.
void execute(const std::function<void()>& body);

/// A thread besides those of the library.
void spawn(std::function<void()> body);

fibers::Ms nowMs();

/// Lets others run for so long.
void pause(fibers::Ms ms);

}  // namespace turns
