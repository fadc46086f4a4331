#include "StepReport.h"

#include <fmt/format.h>

#include <chrono>

#include "Interrupt.h"
#include "JsonText.h"

namespace qorctl {

bool StepReport::run(const std::string& title, const Step& step) {
    return runAlways(title, [&] {
        return interrupt::isRequested() ? Outcome::failure("cancelled with Ctrl-C") : step();
    });
}

bool StepReport::runAlways(const std::string& title, const Step& step) {
    const std::size_t linesBefore = trace_.lineCount();
    const auto start = std::chrono::steady_clock::now();
    const Outcome outcome = step();
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - start;
    tell(title, outcome, elapsed.count());
    if (!outcome.ok) tellWhereToLook(outcome, linesBefore);
    return outcome.ok;
}

void StepReport::tell(const std::string& title, const Outcome& outcome, double elapsedMs) {
    std::string line =
        fmt::format("{:<6}  {:<28} {:6.0f} ms", outcome.ok ? "ok" : "FAILED", title, elapsedMs);
    if (!outcome.text.empty()) line += "  " + outcome.text;
    console_.line(line);
    if (!outcome.ok) ++failed_;
    steps_.push_back(
        {{"step", title}, {"ok", outcome.ok}, {"ms", elapsedMs}, {"text", utf8Of(outcome.text)}});
}

void StepReport::tellWhereToLook(const Outcome& outcome, std::size_t linesBefore) {
    if (outcome.traceLine != 0) {
        console_.line(fmt::format("        see {}:{}", trace_.path(), outcome.traceLine));
        steps_.back()["trace"] = {{"line", outcome.traceLine}};
        return;
    }
    const auto found = trace_.failureBehind(linesBefore);
    if (!found) {
        console_.line("        the trace says nothing: " + trace_.path());
        return;
    }
    console_.line(fmt::format("        see {}:{}: {}", trace_.path(), found->number, found->text));
    steps_.back()["trace"] = {{"line", found->number}, {"text", utf8Of(found->text)}};
}

std::string StepReport::summary() const {
    return fmt::format("{} of {} steps ok", steps_.size() - failed_, steps_.size());
}

}  // namespace qorctl
