#pragma once

#include <vector>

#include "config/JsonNode.h"
#include "model/LiveValue.h"

namespace simulator {

/// The terms of a live measurement; the node is their list.
std::vector<LiveTerm> liveTerms(const JsonNode& list);

}  // namespace simulator
