#include "start/Objections.h"

#include <utility>

#include "doctor/KeyNames.h"
#include "doctor/KeyValues.h"

namespace qorctl::start {
namespace {

using namespace doctor;

bool beginsWith(const std::string& text, const std::string& begin) {
    return text.compare(0, begin.size(), begin) == 0;
}

bool isAboutName(const Finding& one) {
    return beginsWith(one.id, "settings.misspelt.") || beginsWith(one.id, "settings.elsewhere.");
}

bool isAboutExecutable(const Finding& one) {
    return one.id == "settings.QORexecutable" || beginsWith(one.id, "executable.");
}

/// A value's with the name of its key.
std::string told(const Finding& one) {
    const std::string ofKey = "settings.";
    const bool isOfKey = beginsWith(one.id, ofKey) && one.id != "settings.file" &&
                         one.id != "settings.section" && !isAboutName(one);
    return isOfKey ? one.id.substr(ofKey.size()) + ": " + one.what : one.what;
}

Refusal refusalOf(const Findings& problems) {
    Refusal refusal;
    refusal.what = told(problems.front());
    for (const Finding& one : problems) {
        if (&one != &problems.front()) refusal.details.push_back("also:  " + told(one));
        refusal.details.push_back("check: " + one.remedy);
    }
    return refusal;
}

}  // namespace

Objections::Objections(const SettingsFacts& settings, const ExecutableFacts& executable) {
    Findings all = checkNames(settings);
    if (settings.file == SettingsFacts::File::readable && settings.isText) {
        append(all, checkValues(settings));
        append(all, checkExecutable(executable));
    }
    for (Finding& one : all) {
        if (one.status != Status::problem) continue;
        Findings& kind = isAboutName(one)         ? names_
                         : isAboutExecutable(one) ? executable_
                                                  : settings_;
        kind.push_back(std::move(one));
    }
}

std::optional<Refusal> Objections::whyNever(const PeerFacts& peer) const {
    if (peer.isSomebodyThere()) return std::nullopt;
    const Findings executable = peer.isNobodyThere() ? executable_ : Findings();
    if (settings_.empty() && executable.empty()) return std::nullopt;
    Findings problems = executable;
    append(problems, names_);
    if (!settings_.empty()) {
        problems = names_;  // a key that is missed may stand there by another name
        append(problems, settings_);
        append(problems, executable);
    }
    return refusalOf(problems);
}

std::vector<std::string> Objections::notes() const {
    std::vector<std::string> lines;
    for (const Finding& one : names_) lines.push_back(one.what + ": " + one.remedy);
    return lines;
}

Refusal Objections::asReason(Refusal seen) const {
    Findings before = names_;
    append(before, executable_);
    if (before.empty() || seen.isOccupied) return seen;
    Refusal reason = refusalOf(before);
    reason.details.push_back("also:  " + seen.what);
    for (std::string& line : seen.details) reason.details.push_back(std::move(line));
    reason.hasEnded = seen.hasEnded;
    reason.isForGood = seen.isForGood;
    return reason;
}

}  // namespace qorctl::start
