#pragma once

#include <string>

#include "config/JsonNode.h"
#include "script/Script.h"

namespace simulator {

// Throws ConfigError, which names the file, the rule and the reason. A connect that the script says
// nothing about takes connectMs.
Script loadScript(const std::string& path, std::uint32_t connectMs);
Script scriptFromJson(const JsonNode& root, std::uint32_t connectMs);

}  // namespace simulator
