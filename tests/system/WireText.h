#pragma once

#include <string>

#include "WireLog.h"

/// A record's name and fields as one line. Decoded here a third time, independent of both the
/// library and its counterpart, from the bytes alone; bytes left over are shown as such.
std::string describe(const WireRecord& record);
