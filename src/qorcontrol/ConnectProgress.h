#pragma once

// By its bare name, which is how hosts have it on their path.
#include <QorControlFacade.h>

#include "qorcontrol/Export.h"

namespace qorcontrol {

/// How far QOR says that the present connect is, or the last one was.
struct ConnectProgress {
    int figure;          ///< QOR's own last figure; -1: none yet
    unsigned int steps;  ///< so many figures have come
};

/// Any thread may ask, at any time; it asks nobody, and changes nothing of `lastOutcome`. Throws
/// nothing.
QOR_API ConnectProgress connectProgress(const QorControlFacade& facade);

static_assert(sizeof(void*) != 4 || sizeof(ConnectProgress) == 8,
              "the library was built with another compiler, standard library or packing");

}  // namespace qorcontrol
