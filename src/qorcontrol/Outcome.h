#pragma once

#include <string>

#include "qorcontrol/Cause.h"
#include "qorcontrol/Export.h"
#include "qorcontrol/TcpNoDelay.h"

namespace qorcontrol {

/// How an operation of `QorControlFacade` ended, beyond its true or false.
struct Outcome {
    Cause cause = Cause::none;
    /// The answer may belong to an earlier request: one for the same thing had timed out after QOR
    /// had taken it, and its data has not been seen since, or came when this request had not left
    /// yet; or the answer names another one. Not set where it names its request, which not all of
    /// QOR's do. Also set of operations that were successful, also of a value that was read so
    /// before and now comes out of the cache.
    bool mayBelongToEarlier = false;
    unsigned int elapsedMs = 0;
    std::string sentence;  ///< one sentence on what happened; empty if the operation worked
    std::string check;     ///< what to check; empty if the operation worked
};

static_assert(sizeof(void*) != 4 || sizeof(Outcome) == 60,
              "the library was built with another compiler, standard library or packing");

/// Of the calling thread's last operation, on whatever object; an operation that fails because its
/// object was shut down counts, too. Overwritten by the thread's next one; before its first one it
/// tells nothing of use. Construction, `shutdown` and the questions that the facade answers without
/// a request to QOR are no operations. One that an exception ends tells `outOfMemory`.
///
/// Throws nothing. Where there is no memory for the texts they are empty, and the cause is
/// `outOfMemory`.
QOR_API Outcome lastOutcome();

}  // namespace qorcontrol
