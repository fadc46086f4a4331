#pragma once

#include "protocol/IExternalCommand.h"

/// Whether the command's record would be longer than any that may travel: then it is not sent, and
/// a line in the trace says so. It is counted only; nothing is built.
bool isTooLong(const IExternalCommand& command);
