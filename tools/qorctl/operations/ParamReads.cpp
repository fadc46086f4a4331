#include <fmt/format.h>

#include <chrono>
#include <CLI/CLI.hpp>
#include <memory>

#include "Descriptions.h"
#include "JsonText.h"
#include "operations/Operation.h"
#include "operations/Values.h"
#include "TextKind.h"
#include "TextTable.h"

namespace qorctl {
namespace {

using Names = std::vector<std::string>;

std::shared_ptr<Names> declareNames(CLI::App& command) {
    auto names = std::make_shared<Names>();
    command.add_option("NAME", *names, "Parameters")->required();
    return names;
}

/// A row of the results about a parameter that was just read: the library knows its unit by now.
nlohmann::json rowOf(Session& session, const std::string& name) {
    nlohmann::json row = {{"name", utf8Of(name)}};
    const std::string unit = Descriptions(session.facade()).unitOf(name);
    if (!unit.empty()) row["unit"] = utf8Of(unit);
    return row;
}

using ReadOne = std::function<void(const std::string& name, Reply& reply, CallNotes& calls)>;

/// Reads one after the other, also behind one that fails.
Reply readEach(Session& session, const Names& names, const ReadOne& read) {
    using Clock = std::chrono::steady_clock;
    Reply reply;
    reply.result = nlohmann::json::array();
    CallNotes calls;
    for (const std::string& name : names) {
        const Clock::time_point start = Clock::now();
        read(name, reply, calls);
        const std::chrono::duration<double, std::milli> took = Clock::now() - start;
        if (calls.allWorked()) session.reads().note(took.count());
    }
    reply.outcome = calls.allWorked() ? calls.success(fmt::format("{}", fmt::join(names, ", ")))
                                      : calls.failureOfNames("not read");
    return reply;
}

void describe(Session& session, const std::string& name, Reply& reply, CallNotes& calls) {
    wex::ParamDescription found = {};
    if (!calls.note(session.facade().getParamDescription(name, found), name)) return;
    reply.lines.push_back(fmt::format("{}: {} | {} | {} | {} | {}", found.name, found.text1,
                                      found.text2, found.text3, found.text4,
                                      found.threeArrays ? "three arrays" : "one array"));
    reply.result.push_back({{"name", utf8Of(found.name)},
                            {"text1", utf8Of(found.text1)},
                            {"text2", utf8Of(found.text2)},
                            {"text3", utf8Of(found.text3)},
                            {"text4", utf8Of(found.text4)},
                            {"value", found.value},
                            {"threeArrays", found.threeArrays}});
}

void readArrays(Session& session, const std::string& name, Reply& reply, CallNotes& calls) {
    std::vector<double> values;
    std::vector<double> second;
    std::vector<double> third;
    const unsigned int timeoutMs = session.options().timeoutMs;
    if (!calls.note(session.facade().getParamData(name, values, second, third, timeoutMs), name))
        return;
    reply.lines.push_back(fmt::format("{}: {}", name, textOf(values)));
    if (!second.empty()) reply.lines.push_back(fmt::format("  second: {}", textOf(second)));
    if (!third.empty()) reply.lines.push_back(fmt::format("  third: {}", textOf(third)));
    nlohmann::json row = rowOf(session, name);
    row.update({{"values", jsonOf(values)}, {"second", jsonOf(second)}, {"third", jsonOf(third)}});
    reply.result.push_back(std::move(row));
}

/// What a text that was just read is, if it is none; empty if it may be one.
std::string whyNoText(Session& session, const std::string& name) {
    std::vector<double> values;
    const std::string unit = Descriptions(session.facade()).unitOf(name);
    if (!session.facade().getParamData(name, values, session.options().timeoutMs)) return {};
    if (couldBeText(values, unit)) return {};
    return fmt::format("{} is no text, its values are {}{}{}", name, shown(values),
                       unit.empty() ? "" : " ", unit);
}

void readText(Session& session, const std::string& name, Reply& reply, CallNotes& calls) {
    std::string text;
    const unsigned int timeoutMs = session.options().timeoutMs;
    if (!calls.note(session.facade().getParamDataAsString(name, text, timeoutMs), name)) return;
    reply.lines.push_back(fmt::format("{}: {}", name, text));
    reply.result.push_back({{"name", utf8Of(name)}, {"text", utf8Of(text)}});
    const std::string warning = whyNoText(session, name);
    if (warning.empty()) return;
    session.console().line("warning " + warning + "; read it with get");
    reply.result.back()["warning"] = utf8Of(warning);
}

/// Those of the names that QOR does not know; all where it is not that that failed.
Names missingOf(Session& session, const Names& names, qorcontrol::Cause cause) {
    if (cause != qorcontrol::Cause::unknownName) return names;
    Names missing;
    Descriptions descriptions(session.facade());
    for (const std::string& name : names) {
        CallNotes asked;
        descriptions.find(name, asked);
        if (asked.cause() == qorcontrol::Cause::unknownName) missing.push_back(name);
    }
    return missing.empty() ? names : missing;
}

Reply readAtOnce(Session& session, const Names& names) {
    std::vector<std::vector<double>> values;
    CallNotes calls;
    if (!calls.note(
            session.facade().getParamDataAtOnce(names, values, session.options().timeoutMs)))
        return Reply::of(calls.failure(fmt::format(
            "not read: {}", fmt::join(missingOf(session, names, calls.cause()), ", "))));
    Reply reply = Reply::of(calls.success(fmt::format("{}", fmt::join(names, ", "))));
    reply.result = nlohmann::json::array();
    for (std::size_t i = 0; i < values.size() && i < names.size(); ++i) {
        reply.lines.push_back(fmt::format("{}: {}", names[i], textOf(values[i])));
        reply.result.push_back(rowOf(session, names[i]));
        reply.result.back()["values"] = jsonOf(values[i]);
    }
    return reply;
}

/// A command that does `read` with each of its names.
template <typename Read>
OperationWork declareReadEach(CLI::App& command, Read read) {
    const auto names = declareNames(command);
    return [names, read](Session& session) {
        return readEach(session, *names,
                        [&](const std::string& name, Reply& reply, CallNotes& calls) {
                            read(session, name, reply, calls);
                        });
    };
}

}  // namespace

OperationWork declareDescribe(CLI::App& command) {
    return declareReadEach(command, describe);
}

OperationWork declareGet(CLI::App& command) {
    return declareReadEach(command, readArrays);
}

OperationWork declareGetString(CLI::App& command) {
    return declareReadEach(command, readText);
}

OperationWork declareGetAtOnce(CLI::App& command) {
    const auto names = declareNames(command);
    return [names](Session& session) { return readAtOnce(session, *names); };
}

}  // namespace qorctl
