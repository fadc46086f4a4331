#pragma once

#include <nlohmann/json.hpp>

#include "serve/Method.h"

namespace qorctl::serve {

/// The description of all methods, as OpenRPC wants it.
nlohmann::json openRpcOf(const Methods& methods);

}  // namespace qorctl::serve
