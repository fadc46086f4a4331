#include "HeldActuators.h"

#include <algorithm>
#include <chrono>

namespace qorctl {
namespace {

// At the end nobody is in a hurry, and the library may still be busy with what was asked before.
constexpr unsigned int patienceMs = 2000;

// So long a QOR that does not answer is asked again.
constexpr std::chrono::seconds enough(5);

bool isLate(qorcontrol::Cause cause) {
    return cause == qorcontrol::Cause::qorSilent || cause == qorcontrol::Cause::agentBusy ||
           cause == qorcontrol::Cause::pushedOut;
}

bool isFree(qorcontrol::Cause cause) {
    return cause == qorcontrol::Cause::refused || cause == qorcontrol::Cause::unknownName;
}

}  // namespace

bool HeldActuators::take(const std::string& name, unsigned int timeoutMs, CallNotes& calls) {
    // Before it is asked for: a second Ctrl-C may end the program meanwhile.
    const bool isNew = add(name);
    if (isNew) isAsked_.erase(name);
    if (calls.note(facade_.startDirectCtrl(name, timeoutMs))) {
        isAsked_.erase(name);
        return true;
    }
    // QOR also refuses to give what this conversation has already.
    if (isFree(calls.cause())) {
        if (isNew) remove(name);
        return false;
    }
    CallNotes giving;
    giveBack(name, timeoutMs, giving);
    return false;
}

bool HeldActuators::giveBack(const std::string& name, unsigned int timeoutMs, CallNotes& calls) {
    if (calls.note(facade_.stopDirectCtrl(name, timeoutMs))) {
        remove(name);
        find(name);
        isAsked_.erase(name);
        return true;
    }
    if (calls.cause() == qorcontrol::Cause::qorSilent) isAsked_.insert(name);
    return false;
}

bool HeldActuators::giveBackForGood(const std::string& name, CallNotes& calls) {
    const auto end = std::chrono::steady_clock::now() + enough;
    do {
        CallNotes attempt;
        if (giveBack(name, patienceMs, attempt)) return true;
        calls = attempt;
        if (!isLate(attempt.cause())) break;
    } while (std::chrono::steady_clock::now() < end);
    // QOR refuses when it has carried out late what it was asked before.
    if (calls.cause() == qorcontrol::Cause::refused && isAsked_.count(name) != 0) {
        remove(name);
        return true;
    }
    lose(name);
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

std::vector<std::string> HeldActuators::notGivenBack() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    std::vector<std::string> names = lost_;
    names.insert(names.end(), held_.begin(), held_.end());
    return names;
}

void HeldActuators::drop(const std::string& name) {
    remove(name);
    isAsked_.erase(name);
}

bool HeldActuators::add(const std::string& name) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (std::find(held_.begin(), held_.end(), name) != held_.end()) return false;
    held_.push_back(name);
    return true;
}

// In one go: at no moment it is in neither list.
void HeldActuators::lose(const std::string& name) {
    const std::lock_guard<std::mutex> guard(mutex_);
    held_.erase(std::remove(held_.begin(), held_.end(), name), held_.end());
    lost_.push_back(name);
}

void HeldActuators::remove(const std::string& name) {
    const std::lock_guard<std::mutex> guard(mutex_);
    held_.erase(std::remove(held_.begin(), held_.end(), name), held_.end());
    lost_.erase(std::remove(lost_.begin(), lost_.end(), name), lost_.end());
}

void HeldActuators::find(const std::string& name) {
    const std::lock_guard<std::mutex> guard(mutex_);
    lost_.erase(std::remove(lost_.begin(), lost_.end(), name), lost_.end());
}

}  // namespace qorctl
