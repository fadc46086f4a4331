#include <windows.h>

#include <fmt/format.h>

#include <algorithm>
#include <CLI/CLI.hpp>
#include <memory>
#include <stdexcept>

#include "Descriptions.h"
#include "HostPaths.h"
#include "Interrupt.h"
#include "JsonText.h"
#include "operations/Operation.h"
#include "operations/ParamNames.h"
#include "operations/Values.h"
#include "TextTable.h"

namespace qorctl {
namespace {

using Align = TextTable::Align;

std::string folderOf(const std::string& path) {
    return path.substr(0, path.find_last_of("\\/") + 1);
}

bool isFile(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

/// The model that the simulated QOR takes with these settings; empty where there is none, as with
/// QOR itself.
std::string modelPathOf(Session& session) {
    const std::string named = session.settings().value("Simulator", "Model");
    const bool isRelative = named.find(':') != 1 && named.find_first_of("\\/") != 0;
    const std::string path = named.empty()
                                 ? folderOf(session.facade().getQorExecutablePath()) + "engine.json"
                             : isRelative ? folderOf(session.options().settingsPath) + named
                                          : named;
    return isFile(path) ? path : std::string();
}

/// Throws std::runtime_error if there are none.
std::vector<NamedParam> namesFor(Session& session, const std::string& listPath) {
    const std::string modelPath = modelPathOf(session);
    if (listPath.empty() && modelPath.empty())
        throw std::runtime_error(
            "QOR tells no names, and the settings name no model of a simulated one: "
            "give --names FILE");
    std::vector<NamedParam> ofModel;
    if (!modelPath.empty()) ofModel = namesInModel(modelPath);
    if (listPath.empty()) return ofModel;
    std::vector<NamedParam> listed = namesInList(paths::absolute(listPath));
    for (NamedParam& param : listed) {
        const auto known = std::find_if(ofModel.begin(), ofModel.end(),
                                        [&](const auto& one) { return one.name == param.name; });
        if (known != ofModel.end()) param = *known;
    }
    return listed;
}

std::string shownLimit(const std::optional<double>& limit) {
    return limit ? shown(*limit) : std::string();
}

nlohmann::json rowOf(const NamedParam& param, const wex::ParamDescription& description) {
    nlohmann::json row = {{"name", utf8Of(param.name)},
                          {"meaning", utf8Of(meaningOf(description))},
                          {"group", utf8Of(groupOf(description))}};
    if (!unitOf(description).empty()) row["unit"] = utf8Of(unitOf(description));
    if (param.lowest) row["lowest"] = jsonNumber(*param.lowest);
    if (param.highest) row["highest"] = jsonNumber(*param.highest);
    return row;
}

Reply list(Session& session, const std::string& listPath) {
    const std::vector<NamedParam> params = namesFor(session, listPath);
    TextTable table({{"parameter"},
                     {"unit"},
                     {"lowest", Align::right},
                     {"highest", Align::right},
                     {"group"},
                     {"meaning"}});
    Descriptions descriptions(session.facade());
    CallNotes calls;
    Reply reply;
    reply.result = nlohmann::json::array();
    for (const NamedParam& param : params) {
        if (interrupt::isRequested()) return Reply::failure("cancelled with Ctrl-C");
        const wex::ParamDescription* const found = descriptions.find(param.name, calls);
        if (found == nullptr) continue;
        table.add({param.name, unitOf(*found), shownLimit(param.lowest), shownLimit(param.highest),
                   groupOf(*found), meaningOf(*found)});
        reply.result.push_back(rowOf(param, *found));
    }
    reply.lines = table.lines();
    reply.outcome = calls.allWorked() ? calls.success(fmt::format("{} parameters", params.size()))
                                      : calls.failureOfNames("not described");
    return reply;
}

std::string whyNoList(const std::string& path) {
    try {
        static_cast<void>(namesInList(paths::absolute(path)));
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}

}  // namespace

OperationWork declareList(CLI::App& command) {
    const auto listPath = std::make_shared<std::string>();
    command.add_option("--names", *listPath, "File with a name per line; # begins a comment")
        ->type_name("FILE")
        ->check(whyNoList);
    return [listPath](Session& session) { return list(session, *listPath); };
}

}  // namespace qorctl
