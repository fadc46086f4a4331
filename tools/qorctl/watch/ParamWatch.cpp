#include "watch/ParamWatch.h"

#include <fmt/format.h>

#include <algorithm>

#include "Descriptions.h"
#include "Interrupt.h"
#include "JsonText.h"
#include "operations/Values.h"

namespace qorctl {
namespace {

using qorcontrol::Arrivals;

// A minute of a hundred parameters at 100 ms, should the disk or the reader of the output hold this
// program up.
constexpr unsigned int slots = 60000;
constexpr unsigned int pauseMs = 20;
constexpr double refreshS = 0.1;
// QOR sends a value per refresh period. The library's clock moves in steps of up to 20 ms, so a
// short period says nothing.
constexpr double stalePeriods = 3;
constexpr double leastStaleS = 0.2;
// A value comes within a refresh period or two; after this long a person wonders.
constexpr double patienceS = 3;
constexpr double patienceInPeriods = 3;
// A shorter stall at the end may have been one that would have passed.
constexpr double lostAfterS = 2;
constexpr double lostAfterPeriods = 5;

double staleAfterS(unsigned int refreshMs) {
    return std::max(leastStaleS, stalePeriods * refreshMs / 1000.0);
}

double lostAfter(unsigned int refreshMs) {
    return std::max(lostAfterS, lostAfterPeriods * refreshMs / 1000.0);
}

std::string listOf(const std::vector<std::string>& names) {
    return fmt::format("{}", fmt::join(names, ", "));
}

}  // namespace

ParamWatch::ParamWatch(Conversation& conversation, const Options& options, PlotSeries* series)
    : conversation_(conversation),
      session_(conversation.session()),
      options_(options),
      series_(series),
      sampler_(options.names, staleAfterS(session_.options().refreshMs)),
      texts_(session_.facade(), session_.options().timeoutMs) {}

void ParamWatch::run() {
    if (!conversation_.step("describe parameters", [this] { return describe(); })) return;
    conversation_.step("watch", [this] { return stream(); });
    addResults();
}

Outcome ParamWatch::describe() {
    Descriptions descriptions(session_.facade());
    CallNotes calls;
    for (std::size_t i = 0; i < options_.names.size(); ++i) {
        const std::string& name = options_.names[i];
        const wex::ParamDescription* const found = descriptions.find(name, calls);
        if (found == nullptr) continue;
        const bool isOne = isText(i, *found);
        if (!isOne) numbers_.push_back(i);
        units_.push_back(unitOf(*found));
        if (series_ != nullptr) series_->add({name, unitOf(*found), meaningOf(*found), !isOne});
    }
    return calls.allWorked() ? calls.success(listOf(options_.names))
                             : calls.failureOfNames("not described");
}

bool ParamWatch::isText(std::size_t place, const wex::ParamDescription& description) {
    const auto& asNumbers = options_.asNumbers;
    const std::string& name = options_.names[place];
    if (std::find(asNumbers.begin(), asNumbers.end(), name) != asNumbers.end()) return false;
    if (!texts_.takeIfText(place, description)) return false;
    conversation_.console().line("note    " + name +
                                 " looks like a text and is shown as one; --numbers " + name +
                                 " shows numbers");
    return true;
}

Outcome ParamWatch::stream() {
    const auto view =
        makeSampleView(options_.format, conversation_.console(), options_.names, units_);
    view->begin();
    CallNotes calls;
    const WatchClock clock(options_.forS);
    auto arrivals = begunArrivals();
    double refreshedS = 0;
    while (!clock.isOver() && canPrint() && session_.mayGoOn() && interrupt::sleepMs(pauseMs)) {
        // Before the values are taken: one that is on its way meanwhile is not late.
        const double nowS = clock.seconds();
        takeWhatArrived(arrivals.get(), clock);
        texts_.read(sampler_, clock);
        sampler_.settle(nowS);
        show(*view);
        if (nowS - refreshedS >= refreshS) {
            view->refresh(sampler_, nowS);
            refreshedS = nowS;
        }
        tellWhatIsMissing(nowS);
    }
    elapsedS_ = clock.seconds();
    takeWhatArrived(arrivals.get(), clock);
    // Without waiting for QOR, which may show a message box: the ping behind it does, for its time.
    arrivals.reset();
    sampler_.finish();
    show(*view);
    view->end(sampler_, elapsedS_);
    session_.contact().look();
    const bool stopIsSeen = calls.note(session_.facade().pingQor(session_.options().timeoutMs));
    return judge(stopIsSeen, calls);
}

std::unique_ptr<Arrivals> ParamWatch::begunArrivals() const {
    if (numbers_.empty()) return nullptr;
    std::vector<std::string> names;
    for (const std::size_t i : numbers_) names.push_back(options_.names[i]);
    return std::make_unique<Arrivals>(session_.facade(), names, slots);
}

void ParamWatch::takeWhatArrived(Arrivals* arrivals, const WatchClock& clock) {
    std::vector<qorcontrol::Arrival> values;
    if (arrivals == nullptr || !arrivals->read(values, 0)) return;
    for (const qorcontrol::Arrival& each : values)
        sampler_.take(numbers_[each.name], each.value, each.missed, clock.secondsAt(each.timeMs));
}

void ParamWatch::show(SampleView& view) {
    while (const auto sample = sampler_.next()) {
        view.show(*sample);
        if (series_ != nullptr) series_->take(*sample);
    }
}

void ParamWatch::tellWhatIsMissing(double nowS) {
    const double periodS = session_.options().refreshMs / 1000.0;
    if (hasToldMissing_ || nowS < std::max(patienceS, patienceInPeriods * periodS)) return;
    hasToldMissing_ = true;
    const std::vector<std::string> unseen = sampler_.unseen();
    if (unseen.empty()) return;
    const char* const reason = !session_.facade().isEcuOnline() ? "no ECU is online"
                               : unseen.size() == options_.names.size()
                                   ? "QOR sends nothing, perhaps it takes one of them "
                                     "for no measurement"
                                   : "QOR does not send them";
    conversation_.console().line(
        fmt::format("note    no value of {} yet: {}", listOf(unseen), reason));
}

Outcome ParamWatch::judge(bool stopIsSeen, const CallNotes& calls) {
    std::string text = fmt::format("{:.1f} s, {} samples", elapsedS_, sampler_.samples());
    const std::vector<std::string> unseen = sampler_.unseen();
    if (!canPrint()) return Outcome::failure(text + ", then nobody read the output any more");
    if (!session_.options().keepsGoing && !session_.contact().look())
        return lossBehind(session_.contact(), text);
    if (sampler_.samples() == 0 && !interrupt::isRequested())
        return calls.failure(fmt::format("no value came in {:.1f} s", elapsedS_));
    if (!stopIsSeen && session_.contact().lost() == Contact::Lost::nothing)
        return calls.failure(text + ", then QOR did not answer any more");
    const double lostS = lostAfter(session_.options().refreshMs);
    const std::vector<std::string> silent = sampler_.silentSince(elapsedS_ - lostS);
    if (!silent.empty())
        text += fmt::format(", nothing of {} in the last {:.1f} s", listOf(silent), lostS);
    if (!silent.empty() && !session_.options().keepsGoing) return Outcome::failure(text);
    if (!unseen.empty()) text += ", no value of " + listOf(unseen);
    unsigned int missed = 0;
    for (const ParamHistory& history : sampler_.histories()) missed += history.missed;
    if (missed != 0) text += fmt::format(", {} values came too fast to be read", missed);
    return Outcome::success(text);
}

void ParamWatch::addResults() {
    nlohmann::json& results = conversation_.results();
    results["seconds"] = elapsedS_;
    results["samples"] = sampler_.samples();
    for (std::size_t i = 0; i < units_.size(); ++i) {
        const ParamHistory& history = sampler_.histories()[i];
        nlohmann::json row = {{"name", utf8Of(history.name)},
                              {"unit", utf8Of(units_[i])},
                              {"samples", history.samples},
                              {"missed", history.missed},
                              {"interruptions", history.interruptions}};
        if (history.hasRange) {
            row["lowest"] = history.lowest;
            row["highest"] = history.highest;
        }
        if (history.isText) row["text"] = utf8Of(history.text);
        results["parameters"].push_back(std::move(row));
    }
}

}  // namespace qorctl
