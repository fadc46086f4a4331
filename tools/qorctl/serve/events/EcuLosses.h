#pragma once

#include <atomic>
#include <functional>

namespace qorctl::serve {

/// Tells losses of the ECU that nobody wanted from those that were asked for: QOR lets its ECU go
/// for a new connect. One thread looks from time to time, requests run on another.
class EcuLosses {
public:
    /// Of one thread. True if the ECU is online again after a loss that nobody wanted.
    /// @param isOnline  tells whether it is; asked after what requests have found was taken, or a
    ///        loss that they see in between would be counted twice.
    bool look(const std::function<bool()>& isOnline);

    /// A request begins for which QOR lets the ECU go: a loss from now on, until the ECU is seen
    /// online again, is wanted. One that came before is not, though no look may have seen it yet:
    /// who asks for a new connect has often just lost the ECU.
    void beginLettingGo(bool isOnline);
    void endLettingGo() { isLettingGo_ = false; }

private:
    std::atomic<bool> isLettingGo_{false};
    std::atomic<bool> isExpected_{false};
    std::atomic<bool> isFoundOffline_{false};  // by a request, perhaps between two looks
    // Of the thread that looks.
    bool wasOnline_ = false;
    bool isLost_ = false;  // and nobody wanted that
};

}  // namespace qorctl::serve
