#include "HeldActuators.h"

#include <algorithm>

namespace qorctl {
namespace {

// At the end nobody is in a hurry, and the library may still be busy with what was asked before.
constexpr unsigned int patienceMs = 2000;

bool isFree(qorcontrol::Cause cause) {
    return cause == qorcontrol::Cause::refused || cause == qorcontrol::Cause::unknownName;
}

}  // namespace

bool HeldActuators::take(const std::string& name, unsigned int timeoutMs, CallNotes& calls) {
    add(name);  // before it is asked for: a second Ctrl-C may end the program meanwhile
    const bool taken = facade_.startDirectCtrl(name, timeoutMs);
    calls.note(taken);
    if (taken) return true;
    const bool wasRefused = isFree(calls.cause());
    CallNotes giving;
    if (giving.note(facade_.stopDirectCtrl(name, timeoutMs)) || wasRefused) remove(name);
    return false;
}

bool HeldActuators::giveBack(const std::string& name, unsigned int timeoutMs, CallNotes& calls) {
    if (!calls.note(facade_.stopDirectCtrl(name, timeoutMs))) return false;
    remove(name);
    return true;
}

bool HeldActuators::giveBackForGood(const std::string& name, CallNotes& calls) {
    CallNotes first;
    if (giveBack(name, patienceMs, first)) return true;
    // QOR may have carried that out late; then there is nothing left to give back.
    const bool mayBeGiven = first.cause() != qorcontrol::Cause::refused;
    CallNotes second;
    if (giveBack(name, patienceMs, second)) return true;
    remove(name);
    if (mayBeGiven && second.cause() == qorcontrol::Cause::refused) return true;
    calls = second;
    const std::lock_guard<std::mutex> guard(mutex_);
    lost_.push_back(name);
    return false;
}

std::vector<std::string> HeldActuators::giveAllBackForGood() {
    std::vector<std::string> given;
    while (const auto name = latest()) {
        CallNotes calls;
        if (giveBackForGood(*name, calls)) given.push_back(*name);
    }
    return given;
}

std::optional<std::string> HeldActuators::latest() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (held_.empty()) return std::nullopt;
    return held_.back();
}

std::vector<std::string> HeldActuators::names() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return held_;
}

std::vector<std::string> HeldActuators::lost() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return lost_;
}

void HeldActuators::add(const std::string& name) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (std::find(held_.begin(), held_.end(), name) == held_.end()) held_.push_back(name);
}

void HeldActuators::remove(const std::string& name) {
    const std::lock_guard<std::mutex> guard(mutex_);
    held_.erase(std::remove(held_.begin(), held_.end(), name), held_.end());
}

}  // namespace qorctl
