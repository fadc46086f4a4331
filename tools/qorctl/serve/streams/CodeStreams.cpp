#include "serve/streams/CodeStreams.h"

#include <algorithm>

#include "JsonText.h"
#include "serve/Audience.h"
#include "serve/methods/Common.h"
#include "serve/rpc/Failure.h"
#include "TroubleCodes.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;

constexpr unsigned int slots = 64;
constexpr unsigned int shortestPeriodMs = 100;
constexpr unsigned int longestPeriodMs = 24 * 3600 * 1000;
constexpr unsigned int endMs = 2000;

}  // namespace

CodeStreams::CodeStreams(const QorControlFacade& facade, Later later)
    : facade_(facade), later_(std::move(later)), queue_(slots) {}

CodeStreams::~CodeStreams() {
    if (present_.periodMs != 0) facade_.stopDtcRead();
    // Only behind an answer to a later request the library surely fills it no more.
    if (!isLent_ || facade_.pingQor(endMs)) queue_.takeBack();
}

Methods CodeStreams::methods() {
    return streamMethods(
        "DtcRead",
        "the trouble codes: events \"dtcs\" with the list, whenever it has changed, and "
        "\"dtcTrouble\" when it could not be read four times in a row",
        {timeoutMs(), whole("periodMs", "So often they are read; at least 100")
                          .atMost(longestPeriodMs)
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

std::uint64_t CodeStreams::start(const json& given, const std::shared_ptr<Client>& client) {
    auto stream = std::make_shared<Stream>();
    stream->pace = {wholeOf(given["timeoutMs"]),
                    std::max(wholeOf(given["periodMs"]), shortestPeriodMs)};
    const std::uint64_t number = streams_.add(client, std::move(stream));
    if (!tidy()) {
        const qorcontrol::Outcome told = qorcontrol::lastOutcome();
        streams_.remove(number, *client);
        failAs(told);
    }
    return number;
}

CodeStreams::Pace CodeStreams::wanted() const {
    Pace pace;
    for (const auto& each : streams_.all()) {
        const Pace& own = each.stream->pace;
        pace.timeoutMs = std::max(pace.timeoutMs, own.timeoutMs);
        pace.periodMs = pace.periodMs == 0 ? own.periodMs : std::min(pace.periodMs, own.periodMs);
    }
    return pace;
}

bool CodeStreams::tidy() {
    const Pace pace = wanted();
    if (!(pace != present_)) return true;
    isLent_ = isLent_ || pace.periodMs != 0;
    const bool worked = pace.periodMs == 0
                            ? facade_.stopDtcRead()
                            : facade_.startDtcRead(queue_.get(), pace.timeoutMs, pace.periodMs);
    if (worked) present_ = pace;
    return worked;
}

void CodeStreams::feed() {
    CodeList list;
    while (queue_.get()->pop(list, 0)) pass(news_.take(list));
}

void CodeStreams::pass(DtcNews::Kind kind) {
    const json codes = qorctl::jsonOf(news_.codes());
    for (const auto& each : streams_.all()) {
        const bool isForIt = kind != DtcNews::Kind::none || each.stream->isNew;
        if (!isForIt || each.client->hasLeft()) continue;
        each.stream->isNew = false;
        if (kind == DtcNews::Kind::failure)
            tell(*each.client, "dtcTrouble",
                 {{"stream", each.number},
                  {"sentence", "the trouble codes could not be read, four times in a row"}});
        else
            tell(*each.client, "dtcs", {{"stream", each.number}, {"dtcs", codes}});
    }
}

}  // namespace qorctl::serve
