#include "Contact.h"

#include <chrono>
#include <thread>
#include <utility>

namespace qorctl {
namespace {

using qorcontrol::Cause;

// The library asks for the ECU's state every 400 ms, and QOR takes its time to answer.
constexpr unsigned int onlineSlices = 24;
constexpr std::chrono::milliseconds onlineSlice(50);

}  // namespace

bool Contact::look() {
    if (lost_ == Lost::nothing && reliesOnEcu_ && !facade_.isEcuOnline() && askQor() &&
        !isEcuOnlineSoon())
        note(Lost::ecu, Outcome::failure("the ECU was lost"));
    return lost_ == Lost::nothing;
}

void Contact::lookAtTheEnd() {
    look();
    wasEcuOnline_ = facade_.isEcuOnline() && lost_ == Lost::nothing;
    didQorAnswer_ = lost_ != Lost::qor && askQor();
}

bool Contact::askQor() {
    CallNotes ping;
    if (ping.note(facade_.pingQor(timeoutMs_))) return true;
    // One that is silent may only be busy.
    if (ping.cause() == Cause::noConnection || isForGood(ping.cause()))
        note(Lost::qor, ping.failure("QOR was lost"));
    return false;
}

bool Contact::isEcuOnlineSoon() const {
    for (unsigned int i = 0; i < onlineSlices && !facade_.isEcuOnline(); ++i)
        std::this_thread::sleep_for(onlineSlice);
    return facade_.isEcuOnline();
}

void Contact::note(Lost what, Outcome loss) {
    if (lost_ != Lost::nothing) return;
    lost_ = what;
    loss_ = std::move(loss);
}

Outcome Contact::takeLoss() {
    isTold_ = true;
    return loss_;
}

Outcome lossBehind(Contact& contact, const std::string& done) {
    Outcome loss = contact.takeLoss();
    loss.text = done + ", then " + loss.text;
    return loss;
}

std::string nameOf(Contact::Lost lost) {
    if (lost == Contact::Lost::nothing) return {};
    return lost == Contact::Lost::ecu ? "ecu" : "qor";
}

bool isForGood(Cause cause) {
    return cause == Cause::agentEnded || cause == Cause::systemFailure;
}

}  // namespace qorctl
