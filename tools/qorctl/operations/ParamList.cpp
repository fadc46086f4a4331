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
#include "operations/ParamSources.h"
#include "operations/Values.h"
#include "TextTable.h"

namespace qorctl {
namespace {

using Align = TextTable::Align;

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
