#include <fmt/format.h>

#include <chrono>
#include <CLI/CLI.hpp>
#include <memory>

#include "Interrupt.h"
#include "Numbers.h"
#include "operations/Operation.h"
#include "operations/Values.h"

namespace qorctl {
namespace {

struct Written {
    std::string name;
    std::vector<double> values;
    std::vector<double> second;
    std::vector<double> third;
};

struct WrittenText {
    std::string name;
    std::string text;
};

struct Held {
    std::string name;
    double seconds = 0;
};

constexpr unsigned int holdSliceMs = 50;

void declareName(CLI::App& command, std::string& name) {
    command.add_option("NAME", name, "Parameter")->required();
}

/// Of a write that has just returned `taken`.
Reply written(bool taken, const std::string& what) {
    return Reply::ofCall(taken, what, what + " was not taken by QOR");
}

Reply giveBack(Session& session, const std::string& name, const std::string& success,
               CallNotes calls = {}) {
    const bool given = session.actuators().giveBack(name, session.options().timeoutMs, calls);
    return Reply::of(given ? calls.success(success)
                           : calls.failure("control of " + name + " was not given back"));
}

/// Until the time is over or Ctrl-C, which is no failure; 0: without an end. False if the ECU or
/// QOR was lost meanwhile.
bool hold(Session& session, double seconds) {
    const auto span = std::chrono::duration<double>(seconds);
    const auto start = std::chrono::steady_clock::now();
    while (seconds == 0 || std::chrono::steady_clock::now() - start < span) {
        if (!session.mayGoOn()) return false;
        if (!interrupt::sleepMs(holdSliceMs)) break;
    }
    return true;
}

Reply startAndHold(Session& session, const Held& held) {
    CallNotes calls;
    if (!session.actuators().take(held.name, session.options().timeoutMs, calls))
        return Reply::of(calls.failure("control of " + held.name + " was not given by QOR"));
    // Without --hold it is the next operations that use it, if there are any.
    if (held.seconds == 0 && session.hasMore()) return Reply::of(calls.success(held.name));
    if (held.seconds == 0) session.console().line("note    " + held.name + " is held until Ctrl-C");
    if (hold(session, held.seconds))
        return giveBack(session, held.name, held.name + ", given back", calls);
    giveBack(session, held.name, "");
    return Reply::of(lossBehind(session.contact(), held.name + " was held"));
}

}  // namespace

OperationWork declareSet(CLI::App& command) {
    const auto data = std::make_shared<Written>();
    declareName(command, data->name);
    const auto values = [&command](const char* name, std::vector<double>& into, const char* help) {
        return real(command.add_option(name, into, help))->delimiter(',')->type_name("NUMBER");
    };
    values("VALUE", data->values, "Values, in physical units")->required();
    values("--second", data->second, "Second array, of a parameter of three arrays");
    values("--third", data->third, "Third array");
    return [data](Session& session) {
        const bool taken = session.facade().setParamData(data->name, data->values, data->second,
                                                         data->third, session.options().timeoutMs);
        return written(taken, fmt::format("{} := {}", data->name, textOf(data->values)));
    };
}

OperationWork declareSetDynamic(CLI::App& command) {
    const auto value = std::make_shared<WrittenText>();
    declareName(command, value->name);
    command.add_option("TEXT", value->text, "The value")->required();
    return [value](Session& session) {
        const bool taken =
            session.facade().setDynamicData(value->name, value->text, session.options().timeoutMs);
        return written(taken, fmt::format("{} := '{}'", value->name, value->text));
    };
}

OperationWork declareStartControl(CLI::App& command) {
    const auto held = std::make_shared<Held>();
    declareName(command, held->name);
    finite(command.add_option("--hold", held->seconds,
                              "Keep it so long, or until Ctrl-C, and give it back"))
        ->type_name("SECONDS")
        ->check(CLI::Range(0.001, 86400.0));
    return [held](Session& session) { return startAndHold(session, *held); };
}

OperationWork declareStopControl(CLI::App& command) {
    const auto name = std::make_shared<std::string>();
    declareName(command, *name);
    return [name](Session& session) { return giveBack(session, *name, *name); };
}

}  // namespace qorctl
