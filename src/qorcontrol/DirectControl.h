#pragma once

#include <string>
#include <utility>

// By its bare name, which is how hosts have it on their path.
#include <QorControlFacade.h>

#include "qorcontrol/Outcome.h"

namespace qorcontrol {

/// An actuator under direct control, given back when this goes, whatever way that is: at the end of
/// its block, by an early return or by an exception. Of two actuators declared one after the other
/// the second is given back first.
///
/// Declare it after the facade, and after the log if there is one: both must outlive it. One thread
/// uses it at a time. Two for one actuator end its direct control with the first that goes.
class DirectControl {
public:
    /// Takes `actuator`; `isTaken` tells whether that worked. Waits up to twice `timeoutMs`, as the
    /// facade does. What cannot be given back at the end is told to `log`, if there is one.
    DirectControl(const QorControlFacade& qor, std::string actuator, unsigned int timeoutMs,
                  const EolLog* log = nullptr)
        : qor_(qor), actuator_(std::move(actuator)), timeoutMs_(timeoutMs), log_(log) {
        isTaken_ = qor_.startDirectCtrl(actuator_, timeoutMs_);
        if (isTaken_) return;
        // A clear no leaves nothing to give back; somebody else may have the actuator.
        const Cause cause = lastOutcome().cause;
        isGivenBack_ = cause == Cause::refused || cause == Cause::unknownName;
        mayBeTaken_ =
            cause == Cause::qorSilent || cause == Cause::noConnection || cause == Cause::agentBusy;
    }

    /// Gives the actuator back, and asks once more if that fails: up to 8 s with a QOR that is
    /// silent, or four times `timeoutMs` where that is longer. If QOR answers neither, the log gets
    /// "FAILED to give back NAME: it may still be under direct control".
    ~DirectControl() {
        const bool isWorthAnother = isTaken_ || mayBeTaken_;
        if (giveBack() || !isWorthAnother || giveBack() || log_ == nullptr) return;
        log_->error("FAILED to give back %s: it may still be under direct control",
                    actuator_.c_str());
    }

    DirectControl(const DirectControl&) = delete;
    DirectControl& operator=(const DirectControl&) = delete;

    /// Whether QOR has said that the actuator is under direct control, and has not taken it back.
    bool isTaken() const noexcept { return isTaken_; }

    const std::string& actuator() const noexcept { return actuator_; }

    /// Moves the actuator; false if it is not taken, or QOR does not carry it out.
    bool set(double position) const {
        return isTaken_ && qor_.setParamData(actuator_, {position}, {}, {}, timeoutMs_);
    }

    /// Gives the actuator back now. True once QOR has said so; then nothing is left to do. False:
    /// it may still be under direct control, and the destructor tries again.
    ///
    /// It also asks when taking the actuator did not work, for QOR may carry that out late. Waits
    /// up to twice `timeoutMs`, but 4 s at least: the library may still be busy with what was asked
    /// before, and does not begin a request whose caller has given up.
    bool giveBack() noexcept {
        if (isGivenBack_) return true;
        try {
            isGivenBack_ = qor_.stopDirectCtrl(actuator_, patienceMs());
            if (!isGivenBack_) noteRefusal(lastOutcome().cause);
        } catch (...) {
            return false;  // out of memory
        }
        if (isGivenBack_) isTaken_ = false;
        return isGivenBack_;
    }

private:
    /// QOR refuses to give back what it has given back late, when nobody waited for it any more.
    void noteRefusal(Cause cause) noexcept {
        isGivenBack_ = cause == Cause::refused && isAsked_;
        isAsked_ = isAsked_ || cause == Cause::qorSilent;
    }
    unsigned int patienceMs() const noexcept {
        constexpr unsigned int least = 2000, most = 30000;
        return timeoutMs_ < least ? least : timeoutMs_ > most ? most : timeoutMs_;
    }

    const QorControlFacade& qor_;
    const std::string actuator_;
    const unsigned int timeoutMs_;
    const EolLog* const log_;
    bool isTaken_ = false;
    bool isGivenBack_ = false;
    bool mayBeTaken_ = false;  // nobody knows: QOR did not answer
    bool isAsked_ = false;     // to give it back, which it may do late
};

}  // namespace qorcontrol
