#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "wire/Message.h"
#include "wire/Payloads.h"
#include "wire/Record.h"

namespace simulator {

// Things that the simulated QOR does of its own accord, at a time that a script or a request sets.

/// Sends a ReceiveParamData.
struct PushEffect {
    std::int32_t index = -1;
    double value = 0.0;
};

struct MessageBoxEffect {
    MessageBoxPayload box;
};

/// Sends a StartEdit. With a size, a file is written first and named in `files` (in `addFiles` for
/// stage 5).
struct EditEffect {
    EditPayload edit;
    std::optional<std::uint32_t> exportBytes;
};

/// Sends any record; no request id = a fresh one.
struct RecordEffect {
    CommandId id = CommandId::Ping;
    bool isReply = false;
    std::optional<std::uint32_t> requestId;
    std::string payload;
};

/// Sends bytes as they are.
struct RawEffect {
    std::string bytes;
};

/// Sends a window message of any form.
struct MessageEffect {
    std::string bytes;
    MessageForm form;
};

/// Sends `count` random window messages that no client accepts; begins with number `first`.
struct FloodEffect {
    std::uint32_t count = 0;
    std::uint32_t seed = 1;
    std::uint32_t maxBytes = 64;
    std::uint32_t first = 0;
};

struct CloseEffect {};

/// The ECU comes online or goes offline, without a word to the client.
struct OnlineEffect {
    bool online = true;
};

/// Stops or resumes the pushing of one subscribed parameter; without an index, of all of them.
struct StallEffect {
    std::optional<std::uint32_t> index;
    bool stalled = true;
};

/// The process ends: in order (what is due is sent, the connection is closed), or at once as in a
/// crash.
struct ExitEffect {
    int code = 0;
    bool inOrder = false;
};

using Effect =
    std::variant<PushEffect, MessageBoxEffect, EditEffect, RecordEffect, RawEffect, MessageEffect,
                 FloodEffect, CloseEffect, OnlineEffect, StallEffect, ExitEffect>;

struct TimedEffect {
    std::uint32_t afterMs = 0;
    Effect effect;
};

}  // namespace simulator
