#include "model/ModelLoader.h"

#include <algorithm>
#include <limits>
#include <set>

#include "model/Followers.h"
#include "model/LiveTermLoader.h"
#include "model/Stamp.h"

namespace simulator {

namespace {

constexpr std::int64_t maxTextBytes = 20000000;
constexpr std::int64_t maxExportBytes = 100000000;
constexpr std::int64_t maxDelayMs = 600000;

ParameterModel textParameter(const JsonNode& node, ParameterModel parameter) {
    parameter.kind = ParameterKind::Text;
    const std::string text = node.at("text").text();
    const auto length = static_cast<std::int64_t>(text.size());
    parameter.maxLength =
        static_cast<std::size_t>(node.integer("maxLength", length, length, maxTextBytes));
    for (const char character : text) {
        parameter.arrays.first.push_back(static_cast<unsigned char>(character));
    }
    parameter.lowest = 0.0;
    parameter.highest = 255.0;
    return parameter;
}

void checkAxis(const JsonNode& node, const std::vector<double>& axis) {
    if (axis.empty()) node.fail("an axis needs at least one point");
    if (std::adjacent_find(axis.begin(), axis.end(), std::greater_equal<>()) != axis.end()) {
        node.fail("the points of an axis must rise");
    }
}

ParameterModel arrayParameter(const JsonNode& node, ParameterModel parameter) {
    parameter.kind = ParameterKind::Array;
    parameter.arrays.first = node.at("values").numbers();
    std::size_t expected = parameter.arrays.first.size();
    if (node.has("x")) {
        parameter.kind = ParameterKind::Curve;
        parameter.arrays.second = node.at("x").numbers();
        checkAxis(node.at("x"), parameter.arrays.second);
        expected = parameter.arrays.second.size();
    }
    if (node.has("y")) {
        parameter.kind = ParameterKind::Map;
        if (!node.has("x")) node.fail("\"y\" needs \"x\"");
        parameter.arrays.third = node.at("y").numbers();
        checkAxis(node.at("y"), parameter.arrays.third);
        expected *= parameter.arrays.third.size();
    }
    if (parameter.arrays.first.size() != expected || expected == 0) {
        node.at("values").fail("has " + std::to_string(parameter.arrays.first.size()) +
                               " numbers; the axes ask for " + std::to_string(expected));
    }
    return parameter;
}

ParameterModel shapedParameter(const JsonNode& node, ParameterModel parameter) {
    if (node.has("text")) return textParameter(node, std::move(parameter));
    if (node.has("values")) return arrayParameter(node, std::move(parameter));
    if (node.has("live")) {
        parameter.kind = ParameterKind::Live;
        parameter.live = liveTerms(node.at("live"));
        return parameter;
    }
    if (node.boolean("actuator", false)) parameter.kind = ParameterKind::Actuator;
    parameter.arrays.first = {node.at("value").number()};
    return parameter;
}

void readLimits(const JsonNode& node, ParameterModel& parameter) {
    const JsonNode limits = node.at("limits");
    const std::vector<double> bounds = limits.numbers();
    if (bounds.size() != 2) limits.fail("must be [lowest, highest]");
    if (bounds[0] > bounds[1]) limits.fail("the lowest value is above the highest");
    parameter.lowest = bounds[0];
    parameter.highest = bounds[1];
}

void checkWithinLimits(const JsonNode& node, const ParameterModel& parameter) {
    for (const double value : parameter.arrays.first) {
        if (!(value >= parameter.lowest && value <= parameter.highest)) {
            node.fail("the value " + nlohmann::json(value).dump() + " is outside the limits");
        }
    }
}

ParameterModel parameterFrom(const JsonNode& node, const std::string& name) {
    node.allowOnly({"name", "description", "unit", "group", "limits", "value", "values", "x", "y",
                    "text", "maxLength", "live", "actuator", "stamp"});
    ParameterModel parameter;
    parameter.name = name;
    parameter.description = node.text("description", "");
    parameter.unit = node.text("unit", "");
    parameter.group = node.text("group", "");
    const int shapes = int{node.has("value")} + int{node.has("values")} + int{node.has("text")} +
                       int{node.has("live")};
    if (shapes != 1) node.fail("needs exactly one of \"value\", \"values\", \"text\", \"live\"");
    if (!node.has("text")) readLimits(node, parameter);
    parameter = shapedParameter(node, std::move(parameter));
    if (node.has("stamp")) {
        if (node.has("text") || node.has("live")) node.fail("only numbers can be a stamp");
        parameter.stamp =
            static_cast<std::uint32_t>(node.at("stamp").integer(0, std::int64_t{highestStamp}));
    }
    checkWithinLimits(node, parameter);
    return parameter;
}

std::vector<ParameterModel> parametersFrom(const JsonNode& root) {
    std::vector<ParameterModel> parameters;
    std::set<std::string> names;
    for (const JsonNode& item : root.at("parameters").items()) {
        const std::string name = item.at("name").text();
        const JsonNode node = item.renamed(root.where() + ": parameter \"" + name + "\"");
        if (name.empty()) item.fail("the name is empty");
        if (!names.insert(name).second) node.fail("the name is used twice");
        parameters.push_back(parameterFrom(node, name));
    }
    if (parameters.empty()) root.at("parameters").fail("there is no parameter");
    return parameters;
}

bool canBeFollowed(const ParameterModel& parameter) {
    return parameter.kind == ParameterKind::Scalar || parameter.kind == ParameterKind::Actuator ||
           parameter.kind == ParameterKind::Live;
}

void checkSource(const JsonNode& node, const std::string& source,
                 const std::vector<ParameterModel>& parameters) {
    const auto found =
        std::find_if(parameters.begin(), parameters.end(),
                     [&](const ParameterModel& parameter) { return parameter.name == source; });
    if (found == parameters.end()) node.failUnknownParameter(source, namesOf(parameters));
    if (!canBeFollowed(*found)) {
        node.fail("follows \"" + source + "\", which is no scalar, actuator or live parameter");
    }
}

void checkFollowed(const JsonNode& root, const std::vector<ParameterModel>& parameters) {
    for (const ParameterModel& parameter : parameters) {
        const JsonNode node = root.renamed(root.where() + ": parameter \"" + parameter.name + "\"");
        for (const LiveTerm& term : parameter.live) {
            const auto* follow = std::get_if<FollowTerm>(&term);
            if (follow != nullptr) checkSource(node, follow->source, parameters);
        }
    }
    std::string circle;
    for (const std::string& name : circleIn(parameters)) {
        circle += (circle.empty() ? "\"" : "\" follows \"") + name;
    }
    if (!circle.empty()) root.fail("a circle: " + circle + "\"");
}

TroubleCode troubleCodeFrom(const JsonNode& node) {
    node.allowOnly({"code", "status", "texts"});
    TroubleCode code;
    code.code = node.at("code").word();
    code.status = node.at("status").word();
    const std::vector<JsonNode> texts = node.items("texts");
    if (texts.size() > std::size(code.texts)) node.at("texts").fail("has more than four texts");
    for (std::size_t i = 0; i < texts.size(); ++i) code.texts[i] = texts[i].text();
    return code;
}

KwpServiceModel kwpServiceFrom(const JsonNode& node) {
    node.allowOnly({"service", "data", "response", "failed", "delayMs"});
    KwpServiceModel service;
    service.service = node.at("service").word();
    if (node.has("data")) service.dataPrefix = node.at("data").hexBytes();
    service.response = node.at("response").hexBytes();
    service.failed = node.boolean("failed", false);
    service.delayMs = static_cast<std::uint32_t>(node.integer("delayMs", 0, 0, maxDelayMs));
    return service;
}

CanModel canFrameFrom(const JsonNode& node, const std::vector<ParameterModel>& parameters) {
    node.allowOnly({"id", "value", "source", "scale"});
    CanModel frame;
    frame.canId = node.at("id").word();
    frame.value =
        static_cast<std::int32_t>(node.integer("value", 0, std::numeric_limits<std::int32_t>::min(),
                                               std::numeric_limits<std::int32_t>::max()));
    frame.source = node.text("source", "");
    frame.scale = node.number("scale", 1.0);
    const bool known = frame.source.empty() ||
                       std::any_of(parameters.begin(), parameters.end(),
                                   [&](const ParameterModel& p) { return p.name == frame.source; });
    if (!known) node.at("source").failUnknownParameter(frame.source, namesOf(parameters));
    return frame;
}

std::optional<std::uint32_t> fileSize(const JsonNode& node, const char* key) {
    if (!node.has(key) || node.at(key).isNull()) return std::nullopt;
    return static_cast<std::uint32_t>(node.at(key).integer(0, maxExportBytes));
}

EditModel editFrom(const JsonNode& node) {
    node.allowOnly({"info", "exportBytes", "addExportBytes", "delayMs"});
    EditModel edit;
    if (node.has("info")) {
        for (const auto& [key, value] : node.at("info").members()) edit.info[key] = value.text();
    }
    edit.exportBytes = fileSize(node, "exportBytes");
    edit.addExportBytes = fileSize(node, "addExportBytes");
    edit.delayMs = static_cast<std::uint32_t>(node.integer("delayMs", 0, 0, maxDelayMs));
    return edit;
}

}  // namespace

EcuModel modelFromJson(const JsonNode& root) {
    root.allowOnly({"parameters", "troubleCodes", "kwpServices", "canFrames", "edit"});
    EcuModel model;
    model.parameters = parametersFrom(root);
    checkFollowed(root, model.parameters);
    for (const JsonNode& node : root.items("troubleCodes")) {
        model.troubleCodes.push_back(troubleCodeFrom(node));
    }
    for (const JsonNode& node : root.items("kwpServices")) {
        model.kwpServices.push_back(kwpServiceFrom(node));
    }
    for (const JsonNode& node : root.items("canFrames")) {
        model.canFrames.push_back(canFrameFrom(node, model.parameters));
    }
    if (root.has("edit")) model.edit = editFrom(root.at("edit"));
    return model;
}

EcuModel loadModel(const std::string& path) {
    const nlohmann::json document = readJsonFile(path);
    return modelFromJson(JsonNode(document, path));
}

}  // namespace simulator
