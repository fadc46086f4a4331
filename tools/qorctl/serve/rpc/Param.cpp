#include "serve/rpc/Param.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "HexText.h"
#include "serve/rpc/Failure.h"
#include "serve/rpc/Hint.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;

const char* const numbersAsTexts[] = {"NaN", "Infinity", "-Infinity"};

/// What fits is a number of JSON without a fraction; 2.0 is one as well.
bool isWholeWithin(const json& value, double least, double most) {
    if (!value.is_number()) return false;
    const double number = value.get<double>();
    return number >= least && number <= most &&
           number == static_cast<double>(static_cast<std::int64_t>(number));
}

bool isNumber(const json& value) {
    if (value.is_number()) return true;
    return value.is_string() && std::find(std::begin(numbersAsTexts), std::end(numbersAsTexts),
                                          value.get<std::string>()) != std::end(numbersAsTexts);
}

bool areTexts(const json& value) {
    return value.is_object() && std::all_of(value.begin(), value.end(),
                                            [](const json& each) { return each.is_string(); });
}

/// Null if it fits; else what it should be.
const char* whyNot(const Param& param, const json& value) {
    using Signed = std::numeric_limits<std::int32_t>;
    switch (param.kind) {
        case Kind::text:
            return value.is_string() ? nullptr : "a text";
        case Kind::bytes:
            return value.is_string() && whyNoBytes(value.get<std::string>()).empty()
                       ? nullptr
                       : "a text of bytes like \"0A 1F\"";
        case Kind::whole:
            return isWholeWithin(value, 0, param.most) ? nullptr : "a whole number from 0 to ";
        case Kind::signedWhole:
            return isWholeWithin(value, Signed::min(), Signed::max())
                       ? nullptr
                       : "a whole number from -2147483648 to 2147483647";
        case Kind::flag:
            return value.is_boolean() ? nullptr : "true or false";
        case Kind::number:
            return isNumber(value) ? nullptr : "a number, \"NaN\", \"Infinity\" or \"-Infinity\"";
        case Kind::choice:
            return value.is_string() && std::find(param.choices.begin(), param.choices.end(),
                                                  value.get<std::string>()) != param.choices.end()
                       ? nullptr
                       : "one of its texts";
        case Kind::record:
            return value.is_object() ? nullptr : "an object";
        case Kind::textMap:
            return areTexts(value) ? nullptr : "an object of texts";
    }
    return "nothing that is known";
}

std::string wordsOf(const Param& param, const char* wanted) {
    if (param.kind == Kind::whole) return wanted + std::to_string(param.most);
    if (param.kind != Kind::choice) return wanted;
    std::string words = "one of";
    for (const std::string& choice : param.choices)
        words += (&choice == &param.choices.front() ? " \"" : ", \"") + choice + "\"";
    return words;
}

[[noreturn]] void refuseName(const std::string& name, const std::string& path,
                             const Params& params) {
    std::vector<std::string> names;
    for (const Param& each : params) names.push_back(path + each.name);
    refuseParams("there is no parameter " + quotedWithHint(path + name, names));
}

json checkedObject(const Params& params, const json& given, const std::string& path);

json checkedOne(const Param& param, const json& value, const std::string& path) {
    if (const char* const wanted = whyNot(param, value))
        refuseParams(path + " must be " + wordsOf(param, wanted));
    return param.kind == Kind::record ? checkedObject(param.fields, value, path + ".") : value;
}

json checked(const Param& param, unsigned int lists, const json& value, const std::string& path) {
    if (lists == 0) return checkedOne(param, value, path);
    if (!value.is_array()) refuseParams(path + " must be an array");
    json all = json::array();
    for (std::size_t i = 0; i < value.size(); ++i)
        all.push_back(checked(param, lists - 1, value[i], path + "[" + std::to_string(i) + "]"));
    return all;
}

json checkedObject(const Params& params, const json& given, const std::string& path) {
    for (const auto& [name, value] : given.items()) {
        const bool isKnown =
            std::any_of(params.begin(), params.end(),
                        [&name = name](const Param& each) { return each.name == name; });
        if (!isKnown) refuseName(name, path, params);
    }
    json all = json::object();
    for (const Param& each : params) {
        const auto found = given.find(each.name);
        if (found != given.end())
            all[each.name] = checked(each, each.lists, *found, path + each.name);
        else if (each.isRequired)
            refuseParams(path + each.name + " is missing");
        else
            all[each.name] = each.standard;
    }
    return all;
}

json byName(const Params& params, const json& given) {
    if (given.size() > params.size())
        refuseParams("there are only " + std::to_string(params.size()) + " parameters");
    json named = json::object();
    for (std::size_t i = 0; i < given.size(); ++i) named[params[i].name] = given[i];
    return named;
}

json schemaOfOne(const Param& param) {
    switch (param.kind) {
        case Kind::text:
            return {{"type", "string"}};
        case Kind::bytes:
            return {{"type", "string"}, {"pattern", "^( *[0-9A-Fa-f]{2})* *$"}};
        case Kind::whole:
            return {{"type", "integer"}, {"minimum", 0}, {"maximum", param.most}};
        case Kind::signedWhole:
            return {{"type", "integer"}, {"minimum", -2147483648LL}, {"maximum", 2147483647}};
        case Kind::flag:
            return {{"type", "boolean"}};
        case Kind::number:
            return {{"oneOf", {{{"type", "number"}}, {{"enum", numbersAsTexts}}}}};
        case Kind::choice:
            return {{"enum", param.choices}};
        case Kind::textMap:
            return {{"type", "object"}, {"additionalProperties", {{"type", "string"}}}};
        case Kind::record:
            break;
    }
    json schema = {{"type", "object"},
                   {"properties", json::object()},
                   {"required", json::array()},
                   {"additionalProperties", false}};
    for (const Param& field : param.fields) {
        schema["properties"][field.name] = schemaOf(field);
        if (field.isRequired) schema["required"].push_back(field.name);
    }
    return schema;
}

}  // namespace

Param Param::orElse(json value) const {
    Param optional = *this;
    optional.isRequired = false;
    optional.standard = std::move(value);
    return optional;
}

Param Param::listed() const {
    Param list = *this;
    ++list.lists;
    return list;
}

Param Param::atMost(std::uint32_t largest) const {
    Param bounded = *this;
    bounded.most = largest;
    return bounded;
}

json argumentsOf(const Params& params, const json& given) {
    if (given.is_null()) return checkedObject(params, json::object(), "");
    return checkedObject(params, given.is_array() ? byName(params, given) : given, "");
}

json schemaOf(const Param& param) {
    json schema = schemaOfOne(param);
    for (unsigned int i = 0; i < param.lists; ++i)
        schema = json{{"type", "array"}, {"items", std::move(schema)}};
    if (!param.about.empty()) schema["description"] = param.about;
    if (!param.isRequired) schema["default"] = param.standard;
    return schema;
}

}  // namespace qorctl::serve
