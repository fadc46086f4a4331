#include <fmt/format.h>

#include <algorithm>

#include "demo/Tour.h"
#include "Interrupt.h"
#include "JsonText.h"

namespace qorctl {
namespace {

using Align = TextTable::Align;

const char* const described[] = {"IdleSpeedTarget", "IdleSpeedOverTemperature",
                                 "IgnitionMap",     "VehicleIdentNumber",
                                 "EngineSpeed",     "ThrottleActuator"};
const char* const scalars[] = {"IdleSpeedTarget", "MaxEngineSpeed", "FanOnTemperature",
                               "InjectorFlow",    "LambdaTarget",   "KnockRetard"};
const char* const texts[] = {"VehicleIdentNumber", "EcuSerialNumber", "SoftwareVersion"};
const char* const live[] = {"EngineSpeed", "CoolantTemperature", "BatteryVoltage",
                            "ManifoldPressure", "LambdaVoltage"};
constexpr unsigned int liveSamples = 5;

/// A table of a map, one row per point of its second axis.
TextTable gridOf(const std::vector<double>& values, const std::vector<double>& across,
                 const std::vector<double>& down) {
    std::vector<TextTable::Column> columns = {{"", Align::right}};
    for (const double point : across) columns.push_back({shown(point), Align::right});
    TextTable table(std::move(columns));
    for (std::size_t row = 0; row < down.size(); ++row) {
        std::vector<std::string> cells = {shown(down[row])};
        for (std::size_t i = 0; i < across.size(); ++i)
            cells.push_back(shown(values[row * across.size() + i]));
        table.add(std::move(cells));
    }
    return table;
}

/// The three arrays one below the other, where they do not make up a grid.
TextTable listOf(const std::vector<double>& values, const std::vector<double>& second,
                 const std::vector<double>& third) {
    TextTable table({{"array"}, {"values"}});
    table.add({"values", shown(values)});
    table.add({"second", shown(second)});
    if (!third.empty()) table.add({"third", shown(third)});
    return table;
}

Outcome outcomeOf(const CallNotes& calls, const char* failure) {
    return calls.allWorked() ? calls.success() : calls.failureOfNames(failure);
}

}  // namespace

Outcome Tour::describe() {
    TextTable table({{"parameter"}, {"meaning"}, {"unit"}, {"group"}, {"arrays", Align::right}});
    CallNotes calls;
    for (const char* const name : described) {
        const wex::ParamDescription* const found = descriptions_.find(name, calls);
        if (found == nullptr) continue;
        table.add({name, meaningOf(*found), unitOf(*found), groupOf(*found),
                   found->threeArrays ? "3" : "1"});
        results_["descriptions"].push_back({{"name", name},
                                            {"meaning", utf8Of(meaningOf(*found))},
                                            {"unit", utf8Of(unitOf(*found))},
                                            {"group", utf8Of(groupOf(*found))},
                                            {"threeArrays", found->threeArrays}});
    }
    show(table);
    return outcomeOf(calls, notRead);
}

Outcome Tour::readScalars() {
    TextTable table({{"parameter"}, {"value", Align::right}, {"unit"}});
    CallNotes calls;
    for (const char* const name : scalars) {
        std::vector<double> values;
        if (!read(name, values, calls)) continue;
        const std::string unit = descriptions_.unitOf(name);
        table.add({name, shown(values.front()), unit});
        results_["scalars"].push_back(
            {{"name", name}, {"value", values.front()}, {"unit", utf8Of(unit)}});
    }
    show(table);
    return outcomeOf(calls, notRead);
}

Outcome Tour::readArrays(const std::string& name) {
    std::vector<double> values;
    std::vector<double> second;
    std::vector<double> third;
    CallNotes calls;
    if (!calls.note(facade_.getParamData(name, values, second, third, timeoutMs_), name))
        return calls.failureOfNames(notRead);
    const bool isGrid = !third.empty() && values.size() == second.size() * third.size();
    show(isGrid ? gridOf(values, second, third) : listOf(values, second, third));
    const std::string unit = descriptions_.unitOf(name);
    results_["arrays"].push_back({{"name", name},
                                  {"unit", utf8Of(unit)},
                                  {"values", values},
                                  {"second", second},
                                  {"third", third}});
    if (values.empty() || second.empty())
        return calls.failure(name + " came without its values or its axis");
    return calls.success(fmt::format("{}, {} values in {}", name, values.size(), unit));
}

Outcome Tour::readTexts() {
    TextTable table({{"parameter"}, {"text"}});
    CallNotes calls;
    for (const char* const name : texts) {
        std::string text;
        if (!calls.note(facade_.getParamDataAsString(name, text, timeoutMs_), name)) continue;
        table.add({name, text});
        results_["texts"].push_back({{"name", name}, {"text", utf8Of(text)}});
    }
    show(table);
    return outcomeOf(calls, notRead);
}

Outcome Tour::watchLive() {
    TextTable table({{"measurement"}, {"samples"}, {"unit"}});
    std::map<std::string, std::vector<double>> samples;
    CallNotes calls;
    for (unsigned int round = 0; round < liveSamples; ++round) {
        if (!interrupt::sleepMs(session_.staleAfterMs()))
            return Outcome::failure("cancelled with Ctrl-C");
        for (const char* const name : live) {
            std::vector<double> values;
            if (!read(name, values, calls)) return calls.failureOfNames(notRead);
            samples[name].push_back(values.front());
        }
    }
    for (const char* const name : live) {
        const std::string unit = descriptions_.unitOf(name);
        table.add({name, shown(samples[name]), unit});
        results_["live"].push_back(
            {{"name", name}, {"unit", utf8Of(unit)}, {"samples", samples[name]}});
    }
    show(table);
    return calls.success(fmt::format("a sample every {} ms", session_.staleAfterMs()));
}

}  // namespace qorctl
