#pragma once

#include <string>

#include "config/JsonNode.h"
#include "model/EcuModel.h"

namespace simulator {

/// Throws ConfigError, which names the file, the parameter and the reason.
EcuModel loadModel(const std::string& path);
EcuModel modelFromJson(const JsonNode& root);

}  // namespace simulator
