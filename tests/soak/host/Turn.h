#pragma once

#include "Operations.h"
#include "Stamps.h"

namespace soak {

template <class Call>
bool Turn::make(unsigned waitMs, Call call) {
    startUs = nowUs();
    startLife = judge.life;
    const bool ok = call();
    judge.callEnded(where, {true, waitMs}, startUs, ok);
    return ok;
}

template <class Call>
bool Turn::makeUntimed(Call call) {
    startUs = nowUs();
    const bool ok = call();
    judge.callEnded(where, {false, 0}, startUs, ok);
    return ok;
}

}  // namespace soak
