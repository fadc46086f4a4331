#include "batch/BatchScript.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <CLI/CLI.hpp>
#include <memory>
#include <stdexcept>

#include "batch/BatchLine.h"
#include "Interrupt.h"
#include "Numbers.h"
#include "Spelling.h"

namespace qorctl {
namespace {

constexpr unsigned int sliceMs = 50;

/// Ends with the contact, too.
Reply sleepFor(Session& session, std::chrono::milliseconds span) {
    const auto end = std::chrono::steady_clock::now() + span;
    for (auto now = end - span; now < end; now = std::chrono::steady_clock::now()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - now).count();
        if (!interrupt::sleepMs(std::min(sliceMs, static_cast<unsigned int>(left))))
            return Reply::failure("cancelled with Ctrl-C");
        if (!session.mayGoOn()) return Reply::of(session.contact().takeLoss());
    }
    return Reply::success();
}

OperationWork declareSleep(CLI::App& command) {
    const auto ms = std::make_shared<unsigned int>(0);
    whole(command.add_option("MS", *ms, "Milliseconds"))
        ->required()
        ->check(CLI::Range(1u, 86400000u));
    return [ms](Session& session) { return sleepFor(session, std::chrono::milliseconds(*ms)); };
}

/// The operations and what only a batch has.
const std::vector<Operation>& batchOperations() {
    static const std::vector<Operation> table = [] {
        std::vector<Operation> rows = operations();
        rows.push_back({"sleep", "Do nothing for a while", "", false, &declareSleep});
        return rows;
    }();
    return table;
}

/// Throws std::invalid_argument if there is no such operation.
void demandKnown(const std::string& name) {
    std::vector<std::string> names;
    for (const Operation& operation : batchOperations()) names.emplace_back(operation.name);
    if (std::find(names.begin(), names.end(), name) != names.end()) return;
    const std::string nearest = nearestOf(name, names);
    throw std::invalid_argument(
        fmt::format("there is no operation \"{}\"{}", name,
                    nearest.empty() ? "" : fmt::format("; did you mean \"{}\"?", nearest)));
}

/// Throws CLI::ParseError, or std::invalid_argument if there is no such operation.
BatchStep stepOf(std::vector<std::string> words) {
    CLI::App app;
    app.allow_windows_style_options(false);
    app.require_subcommand(1);
    BatchStep step;
    step.text = fmt::format("{}", fmt::join(words, " "));
    for (const Operation& operation : batchOperations()) {
        CLI::App* const command = app.add_subcommand(operation.name);
        const OperationWork work = operation.declare(*command);
        command->callback([&step, &operation, work] {
            step.command = operation.name;
            step.needsEcu = operation.needsEcu;
            step.work = work;
        });
    }
    demandKnown(words.front());
    std::reverse(words.begin(), words.end());  // as the parser wants them
    app.parse(std::move(words));
    return step;
}

}  // namespace

BatchScript::BatchScript(std::istream& lines) {
    std::string line;
    for (unsigned int number = 1; std::getline(lines, line); ++number) {
        try {
            const std::vector<std::string> words = wordsOf(line);
            if (!words.empty()) steps_.push_back(stepOf(words));
        } catch (const std::exception& error) {
            throw std::invalid_argument(fmt::format("line {}: {}", number, error.what()));
        }
    }
    if (steps_.empty()) throw std::invalid_argument("there is no line to carry out");
}

bool BatchScript::wantsConnection() const {
    const auto first = std::find_if(steps_.begin(), steps_.end(), [](const BatchStep& step) {
        return step.needsEcu || step.command == "connect";
    });
    return first != steps_.end() && first->needsEcu;
}

}  // namespace qorctl
