#pragma once

#include "QorControlFacade.h"

/// The examples of the host guide: what QOR wants asked of the operator.
namespace guide {

unsigned int answerBoxes(const QorControlFacade& qor, const EolLog& log, unsigned int last);

}  // namespace guide
