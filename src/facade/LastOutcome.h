#pragma once

#include <memory>
#include <string>

#include "common/Verdict.h"

/// What `qorcontrol::lastOutcome` tells is noted here, by every operation at its end.
namespace lastoutcome {

/// How an operation has ended.
struct Ended {
    common::Verdict verdict;
    std::shared_ptr<const std::string> reason;  ///< in place of the detail; null: none
    unsigned int elapsedMs = 0;
};

/// As the calling thread's last one. Texts are made only when they are asked for: whoever does
/// not ask pays for a few words.
void note(Ended ended) noexcept;

}  // namespace lastoutcome
