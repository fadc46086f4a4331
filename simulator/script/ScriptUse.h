#pragma once

#include <cstdint>

#include "config/Names.h"
#include "script/Transport.h"

namespace simulator {

/// What a script is read for.
struct ScriptUse {
    std::uint32_t connectMs = 600;  ///< of a connect that the script says nothing about
    Transport transport = Transport::Tcp;
    Names parameters = {};  ///< of the model, in the order of their indices
};

}  // namespace simulator
