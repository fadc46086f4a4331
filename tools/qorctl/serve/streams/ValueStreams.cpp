#include "serve/streams/ValueStreams.h"

#include <algorithm>

#include "CauseJson.h"
#include "qorcontrol/Outcome.h"
#include "serve/Audience.h"
#include "serve/methods/Common.h"
#include "serve/rpc/Failure.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;

constexpr std::size_t maxNames = 1000;
constexpr unsigned int maxSlots = 10000;

bool isListed(const std::vector<std::string>& list, const std::string& name) {
    return std::find(list.begin(), list.end(), name) != list.end();
}

bool isWanted(const Source& source, const Register<Subscription>::Entries& streams) {
    return std::any_of(streams.begin(), streams.end(), [&](const auto& each) {
        return std::any_of(source.names().begin(), source.names().end(),
                           [&](const std::string& name) { return each.stream->wants(name); });
    });
}

}  // namespace

Methods ValueStreams::methods() {
    return streamMethods(
        "ParamRead", "what QOR sends of these parameters: events \"values\"",
        {text("names", "Names of the parameters").listed(),
         whole("slots", "So many values wait for a client that reads slowly")
             .atMost(maxSlots)
             .orElse(1000)},
        Method::Way::inTurn,
        [this](const json& given, const std::shared_ptr<Client>& client) {
            return start(given, client);
        },
        [this](std::uint64_t number, const Client& client) {
            streams_.remove(number, client);
            later_([this] { tidy(); });
        });
}

std::uint64_t ValueStreams::start(const json& given, const std::shared_ptr<Client>& client) {
    const std::vector<std::string> names = textsOf(given["names"]);
    if (names.empty()) refuseParams("names is empty");
    if (names.size() > maxNames) refuseParams("there are more than 1000 names");
    const unsigned int slots = wholeOf(given["slots"]);
    streams_.mayAdd(*client);
    provide(names);
    try {
        return streams_.add(client, std::make_shared<Subscription>(names, slots));
    } catch (const Failure&) {
        tidy();
        throw;
    }
}

void ValueStreams::provide(const std::vector<std::string>& names) {
    std::vector<std::string> together;
    std::vector<std::string> alone;  // whether QOR knows them cannot be told now
    bool tells = true;
    for (const std::string& name : names) {
        const bool isThere = std::any_of(sources_.begin(), sources_.end(),
                                         [&](const auto& each) { return each->has(name); });
        if (isThere || isListed(together, name) || isListed(alone, name)) continue;
        // Who did not answer once is not asked again for each of a thousand.
        tells = tells && isKnown(name);
        (tells ? together : alone).push_back(name);
    }
    std::vector<std::shared_ptr<Source>> added;
    if (!together.empty()) added.push_back(std::make_shared<Source>(facade_, std::move(together)));
    // One name that QOR does not know would keep it from sending the others beside it.
    for (const std::string& name : alone)
        added.push_back(std::make_shared<Source>(facade_, std::vector<std::string>{name}));
    const std::lock_guard<std::mutex> guard(mutex_);
    sources_.insert(sources_.end(), added.begin(), added.end());
}

bool ValueStreams::isKnown(const std::string& name) const {
    wex::ParamDescription description = {};
    if (facade_.getParamDescription(name, description)) return true;
    const qorcontrol::Outcome told = qorcontrol::lastOutcome();
    if (told.cause == qorcontrol::Cause::unknownName) failAs(told);
    return false;
}

std::vector<std::shared_ptr<Source>> ValueStreams::sources() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return sources_;
}

void ValueStreams::split(const std::shared_ptr<Source>& source) {
    source->stop();
    std::vector<std::shared_ptr<Source>> parts;
    for (const std::string& name : source->names())
        parts.push_back(std::make_shared<Source>(facade_, std::vector<std::string>{name}));
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        const auto whole = std::find(sources_.begin(), sources_.end(), source);
        if (whole == sources_.end()) return;
        sources_.erase(whole);
        sources_.insert(sources_.end(), parts.begin(), parts.end());
    }
    tidy();
}

void ValueStreams::tidy() {
    const Streams::Entries streams = streams_.all();
    std::vector<std::shared_ptr<Source>> ended;
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        const auto unwanted =
            std::stable_partition(sources_.begin(), sources_.end(),
                                  [&](const auto& each) { return isWanted(*each, streams); });
        ended.assign(unwanted, sources_.end());
        sources_.erase(unwanted, sources_.end());
    }
    for (const auto& each : ended) each->stop();
}

ValueStreams::Counts ValueStreams::feed() {
    Counts counts;
    const Streams::Entries streams = streams_.all();
    for (const auto& source : sources()) {
        for (const auto& each : source->read())
            for (const auto& to : streams)
                counts.missed += to.stream->add(source->names()[each.name], each.value, each.timeMs,
                                                each.missed);
        qorcontrol::Outcome trouble;
        if (!source->hasNewTrouble(trouble)) continue;
        if (trouble.cause == qorcontrol::Cause::unknownName && source->names().size() > 1)
            later_([this, source = source] { split(source); });
        for (const auto& to : streams)
            if (isWanted(*source, {to}))
                tell(*to.client, "streamTrouble",
                     {{"stream", to.number}, {"cause", qorctl::jsonOf(trouble)}});
    }
    for (const auto& to : streams) {
        if (to.stream->isEmpty() || to.client->hasLeft() || to.client->outlet().isBehind())
            continue;
        counts.sent += to.stream->size();
        to.client->outlet().tell("values", to.stream->takeOut(to.number));
    }
    return counts;
}

}  // namespace qorctl::serve
