#pragma once

#include <string>

#include "doctor/Finding.h"
#include "doctor/PeerFacts.h"
#include "doctor/QorAnswers.h"

namespace qorctl::doctor {

/// Who is where the settings say that QOR is reached, whether that is QOR, and how fast it
/// answers. `executable` is QOR's program as a host would start it; empty: nobody starts it.
Findings checkQor(const PeerFacts& peer, const QorAnswers& answers, const std::string& executable);

/// Whether QOR can be asked without cutting off a host that it works for.
bool mayBeAsked(const PeerFacts& peer);

}  // namespace qorctl::doctor
