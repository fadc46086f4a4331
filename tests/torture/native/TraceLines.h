#pragma once

#include <mutex>
#include <string>

namespace torture {

/// What was traced of warnings and errors in this process.
std::string traceLines();

}  // namespace torture
