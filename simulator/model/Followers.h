#pragma once

#include <cstddef>
#include <vector>

#include "model/EcuModel.h"

namespace simulator {

// What a parameter follows must be there.

/// The places of all parameters that follow another one, each behind those that it follows.
std::vector<std::size_t> followersOf(const std::vector<ParameterModel>& parameters);

/// The names of parameters that follow one another in a circle, the first one again at the end;
/// empty when there is none.
Names circleIn(const std::vector<ParameterModel>& parameters);

}  // namespace simulator
