#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "doctor/ExecutableCheck.h"
#include "doctor/PeerFacts.h"
#include "doctor/SettingsFacts.h"
#include "start/ChildWatch.h"
#include "start/Objections.h"
#include "start/PlaceClaim.h"
#include "start/ProgramLog.h"
#include "start/Refusal.h"

namespace qorctl::start {

/// The beginning of a conversation, seen from outside of the library, which takes ten seconds and
/// more to find out that QOR does not come, and does not tell why. Looks at nothing that could
/// disturb another host.
class Start {
public:
    explicit Start(const std::string& settingsPath);

    /// What may be wrong with the settings, each in a line.
    std::vector<std::string> notes() const { return objections_.notes(); }

    /// What is against it, before the library is asked for anything. (Of a settings file that is
    /// not there it complains at once by itself.) What may pass is waited for, up to 1.5 s.
    std::optional<Refusal> whyNotBegin();

    /// Right before the library begins.
    void begin();
    /// What speaks against the coming of QOR, which does not answer yet, for good or not.
    std::optional<Refusal> whyInVain() const;
    /// Of what is seen, or was seen in vain, with the reason that was known before.
    Refusal asReason(Refusal seen) const { return objections_.asReason(std::move(seen)); }

    /// QOR answers.
    void succeed();
    /// The program that the library has started for QOR and that runs, or what that has started:
    /// for people. None also where the settings name no program.
    std::optional<std::string> stillRunning() const;
    /// Whether that QOR runs no more, as far as that can be seen.
    bool hasQorEnded() const;

    const doctor::SettingsFacts& settings() const { return settings_; }

private:
    using Clock = std::chrono::steady_clock;

    bool isReadable() const {
        return settings_.file == doctor::SettingsFacts::File::readable && settings_.isText;
    }
    doctor::PeerFacts lookAtPlace() const;
    std::optional<Refusal> whyNotAlone(const doctor::PeerFacts& seen);
    std::optional<Refusal> whyNobodyComes(const doctor::PeerFacts& seen) const;

    const doctor::SettingsFacts settings_;
    const doctor::ExecutableFacts executable_;
    const Objections objections_;
    doctor::Holders before_;      // who was there when nothing was started
    bool wasHandedOver_ = false;  // what the library has started had ended when QOR answered
    std::optional<PlaceClaim> claim_;
    std::optional<ProgramLog> log_;
    std::optional<ChildWatch> child_;
    Clock::time_point begun_;
};

}  // namespace qorctl::start
