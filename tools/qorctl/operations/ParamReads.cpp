#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "JsonText.h"
#include "operations/Operation.h"
#include "operations/Values.h"

namespace qorctl {
namespace {

using Names = std::vector<std::string>;

std::shared_ptr<Names> declareNames(CLI::App& command) {
    auto names = std::make_shared<Names>();
    command.add_option("NAME", *names, "Parameters")->required();
    return names;
}

using ReadOne = std::function<bool(const std::string& name, Reply& reply)>;

/// Reads one after the other, also behind one that fails.
Reply readEach(const Names& names, const ReadOne& read) {
    Reply reply = Reply::success(fmt::format("{}", fmt::join(names, ", ")));
    reply.result = nlohmann::json::array();
    Names failed;
    for (const std::string& name : names)
        if (!read(name, reply)) failed.push_back(name);
    if (!failed.empty())
        reply.outcome = Outcome::failure(fmt::format("not read: {}", fmt::join(failed, ", ")));
    return reply;
}

bool describe(Session& session, const std::string& name, Reply& reply) {
    wex::ParamDescription found = {};
    if (!session.facade().getParamDescription(name, found)) return false;
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
    return true;
}

bool readArrays(Session& session, const std::string& name, Reply& reply) {
    std::vector<double> values;
    std::vector<double> second;
    std::vector<double> third;
    if (!session.facade().getParamData(name, values, second, third, session.options().timeoutMs))
        return false;
    reply.lines.push_back(fmt::format("{}: {}", name, textOf(values)));
    if (!second.empty()) reply.lines.push_back(fmt::format("  second: {}", textOf(second)));
    if (!third.empty()) reply.lines.push_back(fmt::format("  third: {}", textOf(third)));
    reply.result.push_back({{"name", utf8Of(name)},
                            {"values", jsonOf(values)},
                            {"second", jsonOf(second)},
                            {"third", jsonOf(third)}});
    return true;
}

bool readText(Session& session, const std::string& name, Reply& reply) {
    std::string text;
    if (!session.facade().getParamDataAsString(name, text, session.options().timeoutMs))
        return false;
    reply.lines.push_back(fmt::format("{}: {}", name, text));
    reply.result.push_back({{"name", utf8Of(name)}, {"text", utf8Of(text)}});
    return true;
}

Reply readAtOnce(Session& session, const Names& names) {
    std::vector<std::vector<double>> values;
    if (!session.facade().getParamDataAtOnce(names, values, session.options().timeoutMs))
        return Reply::failure(fmt::format("not read: {}", fmt::join(names, ", ")));
    Reply reply = Reply::success(fmt::format("{}", fmt::join(names, ", ")));
    reply.result = nlohmann::json::array();
    for (std::size_t i = 0; i < values.size() && i < names.size(); ++i) {
        reply.lines.push_back(fmt::format("{}: {}", names[i], textOf(values[i])));
        reply.result.push_back({{"name", utf8Of(names[i])}, {"values", jsonOf(values[i])}});
    }
    return reply;
}

/// A command that does `read` with each of its names.
template <typename Read>
OperationWork declareReadEach(CLI::App& command, Read read) {
    const auto names = declareNames(command);
    return [names, read](Session& session) {
        return readEach(*names, [&](const std::string& name, Reply& reply) {
            return read(session, name, reply);
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
