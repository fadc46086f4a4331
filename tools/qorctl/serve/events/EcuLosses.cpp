#include "serve/events/EcuLosses.h"

namespace qorctl::serve {

bool EcuLosses::look(const std::function<bool()>& isOnline) {
    const bool wasFoundOffline = isFoundOffline_.exchange(false);
    const bool isOnlineNow = isOnline();
    if (isOnlineNow && !isLettingGo_) isExpected_ = false;
    const bool isGone = wasOnline_ && (wasFoundOffline || !isOnlineNow);
    isLost_ = isLost_ || (isGone && !isExpected_);
    const bool isBack = isOnlineNow && isLost_;
    if (isOnlineNow) isLost_ = false;
    wasOnline_ = isOnlineNow;
    return isBack;
}

void EcuLosses::beginLettingGo(bool isOnline) {
    isLettingGo_ = true;
    (isOnline ? isExpected_ : isFoundOffline_) = true;
}

}  // namespace qorctl::serve
