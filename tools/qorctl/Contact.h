#pragma once

#include <string>

#include "CallNotes.h"
#include "Outcome.h"
#include "QorControlFacade.h"

namespace qorctl {

/// Whether QOR, and the ECU once it was connected, are still there while a conversation relies on
/// them. What was lost stays lost, even if it comes back.
class Contact {
public:
    enum class Lost { nothing, ecu, qor };

    Contact(const QorControlFacade& facade, unsigned int timeoutMs)
        : facade_(facade), timeoutMs_(timeoutMs) {}

    /// Whether the conversation has the ECU from now on.
    void relyOnEcu(bool relies) { reliesOnEcu_ = relies; }

    /// Costs nothing while the ECU is online; else QOR is asked, for a QOR that is busy, as with a
    /// message box, tells nothing of the ECU. False once something was lost.
    bool look();
    /// The same where nothing is left to do: QOR is asked in any case.
    void lookAtTheEnd();

    Lost lost() const { return lost_; }
    /// Of what was lost: a failure with the library's cause, where it tells one. Whoever takes it
    /// tells it.
    Outcome takeLoss();
    bool isTold() const { return isTold_; }

    /// At the last look at the end.
    bool didQorAnswer() const { return didQorAnswer_; }
    bool wasEcuOnline() const { return wasEcuOnline_; }

private:
    bool askQor();
    bool isEcuOnlineSoon() const;
    void note(Lost what, Outcome loss);

    const QorControlFacade& facade_;
    const unsigned int timeoutMs_;
    bool reliesOnEcu_ = false;
    bool didQorAnswer_ = false;
    bool wasEcuOnline_ = false;
    bool isTold_ = false;
    Lost lost_ = Lost::nothing;
    Outcome loss_;
};

/// The failure of a step that has done this much until the loss.
Outcome lossBehind(Contact& contact, const std::string& done);

/// For programs: "ecu", "qor", or empty.
std::string nameOf(Contact::Lost lost);

/// Whether no later request can succeed: the library's agent or its connection's thread is gone.
bool isForGood(qorcontrol::Cause cause);

}  // namespace qorctl
