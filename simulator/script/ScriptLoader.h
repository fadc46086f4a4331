#pragma once

#include <string>

#include "config/JsonNode.h"
#include "script/Script.h"

namespace simulator {

/// What a script is read for.
struct ScriptUse {
    std::uint32_t connectMs = 600;  ///< of a connect that the script says nothing about
    Transport transport = Transport::Tcp;
};

/// Throws ConfigError, which names the file, the rule and the reason. A fault that the transport
/// cannot suffer is an error: a test that asked for it would prove nothing.
Script loadScript(const std::string& path, const ScriptUse& use);
Script scriptFromJson(const JsonNode& root, const ScriptUse& use);

}  // namespace simulator
