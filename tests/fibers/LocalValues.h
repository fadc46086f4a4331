#pragma once

namespace fibers {

/// At the end of the thread: its values go back to those who have left them there.
void releaseLocalValues(unsigned int thread);

}  // namespace fibers
