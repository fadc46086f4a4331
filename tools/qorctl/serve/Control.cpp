#include "serve/Control.h"

#include <algorithm>
#include <utility>

#include "JsonText.h"
#include "serve/methods/Common.h"
#include "serve/rpc/Failure.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;
using Effect = Method::Effect;
using Way = Method::Way;

constexpr unsigned int longestLeaseMs = 24 * 3600 * 1000;
/// So long QOR has to take one back that nobody has any more, and so long until it is asked again.
constexpr unsigned int giveBackMs = 500;
constexpr std::chrono::seconds pause(2);
constexpr ClientNumber nobody = 0;

Param lease() {
    return whole("leaseMs",
                 "It is given back unless renewDirectCtrl comes within that time; 0: no lease")
        .atMost(longestLeaseMs);
}

bool isFree(qorcontrol::Cause cause) {
    return cause == qorcontrol::Cause::refused || cause == qorcontrol::Cause::unknownName;
}

}  // namespace

Methods Control::methods() {
    Param half = timeoutMs();
    half.standard = 500;
    return {{"startDirectCtrl",
             "Takes an actuator under direct control, until stopDirectCtrl or the client's end",
             {paramName(), half, lease().orElse(0)},
             {},
             Way::inTurn,
             Effect::changes,
             [this](const json& given, const std::shared_ptr<Client>& client) {
                 take(given, client->number());
                 return json::object();
             },
             nullptr,
             true},
            {"renewDirectCtrl",
             "Begins the lease of an actuator anew",
             {paramName(), lease()},
             {},
             Way::atOnce,
             Effect::changes,
             [this](const json& given, const std::shared_ptr<Client>& client) {
                 renew(given, client->number());
                 return json::object();
             },
             nullptr,
             true},
            {"stopDirectCtrl",
             "Gives an actuator back, whoever took it",
             {paramName(), half},
             {},
             Way::inTurn,
             Effect::changes,
             [this](const json& given, const auto&) {
                 giveBack(ansiOf(given["name"]), wholeOf(given["timeoutMs"]));
                 return json::object();
             }}};
}

void Control::take(const json& given, ClientNumber client) {
    const std::string name = ansiOf(given["name"]);
    const bool isNew = own(name, client, wholeOf(given["leaseMs"]));
    CallNotes calls;
    if (held_.take(name, wholeOf(given["timeoutMs"]), calls)) return tell(name, client, true);
    // It may have it all the same, and then is to be asked to take it back.
    const std::vector<std::string> left = held_.notGivenBack();
    if (isNew && std::find(left.begin(), left.end(), name) == left.end()) forget(name);
    failAs(calls.failure({}).told);
}

bool Control::own(const std::string& name, ClientNumber client, unsigned int leaseMs) {
    std::optional<Clock::time_point> end;
    if (leaseMs != 0) end = Clock::now() + std::chrono::milliseconds(leaseMs);
    const Guard guard(mutex_);
    const auto owner = std::find_if(owners_.begin(), owners_.end(),
                                    [&](const Owner& each) { return each.name == name; });
    if (owner == owners_.end()) {
        owners_.push_back({name, client, end});
        return true;
    }
    if (owner->client != client && owner->client != nobody)
        throw Failure{RpcCode::taken,
                      "another client has " + utf8Of(name) + " under direct control"};
    *owner = {name, client, end};
    return false;
}

void Control::renew(const json& given, ClientNumber client) {
    const std::string name = ansiOf(given["name"]);
    const unsigned int leaseMs = wholeOf(given["leaseMs"]);
    const Guard guard(mutex_);
    const auto owner = std::find_if(owners_.begin(), owners_.end(), [&](const Owner& each) {
        return each.name == name && each.client == client && !each.isOverdue;
    });
    if (owner == owners_.end())
        throw Failure{RpcCode::taken,
                      "this client does not have " + utf8Of(name) + " under direct control"};
    owner->end.reset();
    if (leaseMs != 0) owner->end = Clock::now() + std::chrono::milliseconds(leaseMs);
}

void Control::giveBack(const std::string& name, unsigned int timeoutMs) {
    CallNotes calls;
    const bool isGiven = held_.giveBack(name, timeoutMs, calls);
    if (isGiven || isFree(calls.cause())) release(name);
    if (!isGiven) failAs(calls.failure({}).told);
}

void Control::release(const std::string& name) {
    held_.drop(name);
    forget(name);
}

void Control::giveBackOrphan(const std::string& name) {
    CallNotes calls;
    if (held_.giveBack(name, giveBackMs, calls) || isFree(calls.cause())) return release(name);
    // QOR does not answer, but may drive it all the same.
    const Guard guard(mutex_);
    for (Owner& each : owners_)
        if (each.name == name) each = {name, nobody, Clock::now() + pause, true, false};
}

void Control::giveBackOf(ClientNumber client) {
    std::vector<Owned> left = all();
    for (auto each = left.rbegin(); each != left.rend(); ++each)
        if (each->client == client) giveBackOrphan(each->name);
}

void Control::giveAllBack() {
    std::vector<Owned> left = all();
    for (auto each = left.rbegin(); each != left.rend(); ++each) giveBackOrphan(each->name);
}

void Control::giveBackOverdue(const std::string& name) {
    bool isToBeAsked = false;
    {
        const Guard guard(mutex_);
        for (Owner& each : owners_)
            if (each.name == name) isToBeAsked = std::exchange(each.isToBeAsked, false);
    }
    if (isToBeAsked) giveBackOrphan(name);
}

std::vector<std::string> Control::takeOverdue() {
    std::vector<std::string> overdue;
    const auto now = Clock::now();
    const Guard guard(mutex_);
    for (Owner& each : owners_)
        if (each.end && *each.end <= now) {
            each.isOverdue = each.isToBeAsked = true;
            each.end = now + pause;
            overdue.push_back(each.name);
        }
    return overdue;
}

std::vector<Control::Owned> Control::all() const {
    std::vector<Owned> owned;
    const Guard guard(mutex_);
    for (const Owner& each : owners_) owned.push_back({each.name, each.client});
    return owned;
}

void Control::forget(const std::string& name) {
    std::optional<ClientNumber> owner;
    {
        const Guard guard(mutex_);
        const auto found = std::find_if(owners_.begin(), owners_.end(),
                                        [&](const Owner& each) { return each.name == name; });
        if (found == owners_.end()) return;
        owner = found->client;
        owners_.erase(found);
    }
    tell(name, *owner, false);
}

void Control::tell(const std::string& name, ClientNumber owner, bool isHeld) const {
    for (const auto& each : audience_.all())
        serve::tell(*each, "control",
                    {{"name", utf8Of(name)}, {"held", isHeld}, {"own", each->number() == owner}});
}

}  // namespace qorctl::serve
