#include "StepReport.h"

#include <fmt/format.h>

#include <chrono>

#include "CauseJson.h"
#include "Interrupt.h"
#include "JsonText.h"

namespace qorctl {
namespace {

/// A step that throws has failed: those behind it still have to be carried out.
Outcome outcomeOf(const StepReport::Step& step) {
    try {
        return step();
    } catch (const std::exception& error) {
        return Outcome::failure(error.what());
    }
}

nlohmann::json detailsOf(const Outcome& outcome) {
    nlohmann::json lines = nlohmann::json::array();
    for (const std::string& line : outcome.details) lines.push_back(utf8Of(line));
    return lines;
}

}  // namespace

bool StepReport::run(const std::string& title, const Step& step) {
    return runAlways(title, [&] {
        return interrupt::isRequested() ? Outcome::failure("cancelled with Ctrl-C") : step();
    });
}

bool StepReport::runAlways(const std::string& title, const Step& step) {
    const auto start = std::chrono::steady_clock::now();
    const Outcome outcome = outcomeOf(step);
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - start;
    tell(title, outcome, elapsed.count());
    tellWhatTheLibraryTells(outcome);
    return outcome.ok;
}

void StepReport::tell(const std::string& title, const Outcome& outcome, double elapsedMs) {
    std::string line =
        fmt::format("{:<6}  {:<28} {:6.0f} ms", outcome.ok ? "ok" : "FAILED", title, elapsedMs);
    if (!outcome.text.empty()) line += "  " + outcome.text;
    console_.line(line);
    if (!outcome.ok) ++failed_;
    steps_.push_back({{"step", utf8Of(title)},
                      {"ok", outcome.ok},
                      {"ms", elapsedMs},
                      {"text", utf8Of(outcome.text)},
                      {"details", detailsOf(outcome)},
                      {"cause", jsonOf(outcome.told)},
                      {"mayBelongToEarlier", outcome.told.mayBelongToEarlier}});
}

void StepReport::tellWhatTheLibraryTells(const Outcome& outcome) {
    const qorcontrol::Outcome& told = outcome.told;
    if (told.mayBelongToEarlier)
        detail("warning: an answer may belong to an earlier request, whose time was over");
    if (told.cause != qorcontrol::Cause::none) {
        detail(fmt::format("cause: {}: {}", nameOf(told.cause), told.sentence));
        detail("check: " + told.check);
    }
    for (const std::string& line : outcome.details) detail(line);
    if (!outcome.ok && outcome.isTraced) detail("trace: " + tracePath_);
}

std::string StepReport::summary() const {
    return fmt::format("{} of {} steps ok", steps_.size() - failed_, steps_.size());
}

}  // namespace qorctl
