#pragma once

#include <string>
#include <vector>

#include "operations/ParamNames.h"
#include "Session.h"

namespace qorctl {

/// The parameters that are known by name although QOR has no list of them: those of the file, and
/// of the model where QOR is the simulated one. Throws std::runtime_error if there is neither.
/// @param listPath  a file with a name per line; empty: none.
std::vector<NamedParam> namesFor(Session& session, const std::string& listPath);

}  // namespace qorctl
