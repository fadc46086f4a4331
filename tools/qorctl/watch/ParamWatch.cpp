#include "watch/ParamWatch.h"

#include <fmt/format.h>

#include <algorithm>

#include "Descriptions.h"
#include "Interrupt.h"
#include "JsonText.h"
#include "operations/Values.h"
#include "watch/StreamQueue.h"
#include "watch/WatchClock.h"

namespace qorctl {
namespace {

using ValueQueue = StreamQueue<QorControlFacade::ParamValue>;

constexpr unsigned int popMs = 20;
constexpr double refreshS = 0.1;
// A value comes within a refresh period or two; after this long a person wonders.
constexpr double patienceS = 3;
constexpr double patienceInPeriods = 3;

std::string listOf(const std::vector<std::string>& names) {
    return fmt::format("{}", fmt::join(names, ", "));
}

}  // namespace

ParamWatch::ParamWatch(Conversation& conversation, const Options& options, PlotSeries* series)
    : conversation_(conversation),
      session_(conversation.session()),
      options_(options),
      series_(series),
      sampler_(options.names, session_.options().refreshMs / 1000.0) {}

void ParamWatch::run() {
    if (!conversation_.step("describe parameters", [this] { return describe(); })) return;
    conversation_.step("watch", [this] { return stream(); });
    addResults();
}

Outcome ParamWatch::describe() {
    Descriptions descriptions(session_.facade());
    CallNotes calls;
    for (const std::string& name : options_.names) {
        const wex::ParamDescription* const found = descriptions.find(name, calls);
        if (found == nullptr) continue;
        units_.push_back(unitOf(*found));
        if (series_ != nullptr) series_->add({name, unitOf(*found), meaningOf(*found)});
    }
    return calls.allWorked() ? calls.success(listOf(options_.names))
                             : calls.failureOfNames("not described");
}

Outcome ParamWatch::stream() {
    ValueQueue queue;
    const auto view =
        makeSampleView(options_.format, conversation_.console(), options_.names, units_);
    view->begin();
    CallNotes calls;
    calls.note(session_.facade().startParamRead(queue.get(), options_.names));
    const WatchClock clock(options_.forS);
    double refreshedS = 0;
    while (!clock.isOver() && !interrupt::isRequested() && canPrint()) {
        ValueBatch batch;
        unsigned int waitMs = popMs;
        // Everything that is there before the sample: else a pause of ours would look like one of
        // the parameters.
        for (unsigned int i = 0; i < ValueQueue::slots && queue.pop(batch, waitMs); ++i, waitMs = 0)
            sampler_.take(batch, clock.seconds());
        const double nowS = clock.seconds();
        if (const auto sample = sampler_.sampleAt(nowS)) {
            view->show(*sample);
            if (series_ != nullptr) series_->take(*sample);
        }
        if (nowS - refreshedS >= refreshS) {
            view->refresh(sampler_, nowS);
            refreshedS = nowS;
        }
        tellWhatIsMissing(nowS);
    }
    elapsedS_ = clock.seconds();
    view->end(sampler_, elapsedS_);
    session_.facade().stopParamRead(queue.get());
    const bool stopIsSeen =
        calls.note(queue.retire(session_.facade(), session_.options().timeoutMs));
    return judge(stopIsSeen, calls);
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

Outcome ParamWatch::judge(bool stopIsSeen, const CallNotes& calls) const {
    std::string text = fmt::format("{:.1f} s, {} samples", elapsedS_, sampler_.samples());
    const std::vector<std::string> unseen = sampler_.unseen();
    if (!canPrint()) return Outcome::failure(text + ", then nobody read the output any more");
    if (sampler_.samples() == 0 && !interrupt::isRequested())
        return calls.failure(fmt::format("no {} came in {:.1f} s",
                                         unseen.empty() ? "whole refresh period" : "value",
                                         elapsedS_));
    if (!stopIsSeen) return calls.failure(text + ", then QOR did not answer any more");
    if (!unseen.empty()) text += ", no value of " + listOf(unseen);
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
                              {"interruptions", history.interruptions}};
        if (history.hasRange) {
            row["lowest"] = history.lowest;
            row["highest"] = history.highest;
        }
        results["parameters"].push_back(std::move(row));
    }
}

}  // namespace qorctl
