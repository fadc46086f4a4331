#pragma once

#include <string>
#include <vector>

#include "watch/Sampler.h"

namespace qorctl {

/// The table that a watch shows on a terminal, as of `nowS`. `units` are in the order of the
/// parameters. A parameter that has stalled shows "-" and how long ago it was last seen.
std::vector<std::string> liveTable(const Sampler& sampler, const std::vector<std::string>& units,
                                   double nowS);

}  // namespace qorctl
