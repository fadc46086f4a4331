#pragma once

namespace fibers {

/// Events that were made and not closed.
int openEvents();

}  // namespace fibers
