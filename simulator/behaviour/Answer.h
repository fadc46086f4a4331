#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "behaviour/Outcome.h"
#include "script/Script.h"
#include "wire/Record.h"

namespace simulator {

/// The two ways in which an answer with content may go back: a record stamped with the request's id
/// and the reply flag, or an acknowledgement and then a command of QOR's own.
enum class AnswerStyle { Stamped, Separate };

struct AnswerRecord {
    Record record;
    std::uint32_t delayMs = 0;
    bool isAcknowledgement = false;
};

Record acknowledgement(const Record& request, std::uint32_t status);

/// The records that answer a request, in order. nextRequestId numbers commands of QOR's own.
std::vector<AnswerRecord> composeAnswer(const Record& request, const Outcome& outcome,
                                        const Action& action, AnswerStyle style,
                                        const std::function<std::uint32_t()>& nextRequestId);

}  // namespace simulator
