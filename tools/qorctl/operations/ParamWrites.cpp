#include <fmt/format.h>

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

void declareName(CLI::App& command, std::string& name) {
    command.add_option("NAME", name, "Parameter")->required();
}

/// Of a write that has just returned `taken`.
Reply written(bool taken, const std::string& what) {
    return Reply::ofCall(taken, what, what + " was not taken by QOR");
}

/// Of a release that has just returned `given`.
Reply givenBack(bool given, const std::string& name, const std::string& success,
                const CallNotes& calls = {}) {
    return Reply::ofCall(given, success, "control of " + name + " was not given back", calls);
}

Reply startAndHold(Session& session, const Held& held) {
    QorControlFacade& facade = session.facade();
    const unsigned int timeoutMs = session.options().timeoutMs;
    CallNotes calls;
    if (!calls.note(facade.startDirectCtrl(held.name, timeoutMs))) {
        // A QOR that was only slow may still give it.
        facade.stopDirectCtrl(held.name, timeoutMs);
        return Reply::of(calls.failure("control of " + held.name + " was not given by QOR"));
    }
    if (held.seconds == 0) return Reply::of(calls.success(held.name));
    // Ctrl-C ends the holding, and that is no failure.
    interrupt::sleepMs(static_cast<unsigned int>(held.seconds * 1000));
    return givenBack(facade.stopDirectCtrl(held.name, timeoutMs), held.name,
                     held.name + ", given back", calls);
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
    real(command.add_option("--hold", held->seconds,
                            "Keep it so long, or until Ctrl-C, and give it back"))
        ->type_name("SECONDS")
        ->check(CLI::Range(0.001, 86400.0));
    return [held](Session& session) { return startAndHold(session, *held); };
}

OperationWork declareStopControl(CLI::App& command) {
    const auto name = std::make_shared<std::string>();
    declareName(command, *name);
    return [name](Session& session) {
        return givenBack(session.facade().stopDirectCtrl(*name, session.options().timeoutMs), *name,
                         *name);
    };
}

}  // namespace qorctl
