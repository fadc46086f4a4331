#pragma once

#include <string>

#include "config/JsonNode.h"
#include "script/Script.h"
#include "script/ScriptUse.h"

namespace simulator {

/// Throws ConfigError, which names the file, the rule and the reason. A fault that the transport
/// cannot suffer is an error, and so is a name that the model lacks: a test that asked for it would
/// prove nothing.
Script loadScript(const std::string& path, const ScriptUse& use);
Script scriptFromJson(const JsonNode& root, const ScriptUse& use);

}  // namespace simulator
