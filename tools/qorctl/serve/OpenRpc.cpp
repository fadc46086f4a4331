#include "serve/OpenRpc.h"

#include "qorcontrol/Version.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;

json contentOf(const Param& param) {
    return {{"name", param.name}, {"required", param.isRequired}, {"schema", schemaOf(param)}};
}

}  // namespace

json openRpcOf(const Methods& methods) {
    json described = json::array();
    for (const Method& each : methods) {
        Param result{"result", Kind::record, ""};
        result.fields = each.result;
        // A result may tell more: a warning, or figures.
        json fields = schemaOf(result);
        fields.erase("additionalProperties");
        json params = json::array();
        for (const Param& param : each.params) params.push_back(contentOf(param));
        described.push_back({{"name", each.name},
                             {"summary", each.about},
                             {"paramStructure", "either"},
                             {"params", std::move(params)},
                             {"result", {{"name", "result"}, {"schema", std::move(fields)}}}});
    }
    return {{"openrpc", "1.2.6"},
            {"info", {{"title", "QorControlFacade"}, {"version", QOR_VERSION_TEXT}}},
            {"methods", std::move(described)}};
}

}  // namespace qorctl::serve
