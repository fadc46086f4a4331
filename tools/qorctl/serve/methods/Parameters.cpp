// Parameters: described, read, written, taken under direct control.

#include "Descriptions.h"
#include "HexText.h"
#include "JsonText.h"
#include "serve/methods/Common.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;
using Effect = Method::Effect;
using Way = Method::Way;

Param values(const char* name, const char* about) {
    return number(name, about).listed();
}

Method describing(const QorControlFacade& facade) {
    return {"getParamDescription",
            "Describes a parameter",
            {paramName()},
            {text("name", "The name in QOR's answer"), text("meaning", "What it is"),
             text("unit", "Its unit, or empty"), text("group", "Where it belongs"),
             flag("threeArrays", "Whether it has two further arrays, the axes of a curve or map")},
            Way::inTurn,
            Effect::looks,
            [&facade](const json& given, const auto&) {
                wex::ParamDescription description = {};
                mustHaveWorked(facade.getParamDescription(ansiOf(given["name"]), description));
                return json{{"name", utf8Of(description.text1)},
                            {"meaning", utf8Of(meaningOf(description))},
                            {"unit", utf8Of(unitOf(description))},
                            {"group", utf8Of(groupOf(description))},
                            {"threeArrays", description.threeArrays}};
            }};
}

Method reading(const QorControlFacade& facade) {
    return {"getParamData",
            "Reads a parameter",
            {paramName(), timeoutMs()},
            {values("values", "Its values"), values("second", "The second array, if it has one"),
             values("third", "The third array, if it has one")},
            Way::inTurn,
            Effect::looks,
            [&facade](const json& given, const auto&) {
                std::vector<double> first;
                std::vector<double> second;
                std::vector<double> third;
                mustHaveWorked(facade.getParamData(ansiOf(given["name"]), first, second, third,
                                                   wholeOf(given["timeoutMs"])));
                return json{{"values", jsonOf(first)},
                            {"second", jsonOf(second)},
                            {"third", jsonOf(third)}};
            }};
}

Method readingText(const QorControlFacade& facade) {
    return {"getParamDataAsString",
            "Reads a parameter whose values are character codes",
            {paramName(), timeoutMs()},
            {text("text", "Its text"), {"bytes", Kind::bytes, "The same as bytes"}},
            Way::inTurn,
            Effect::looks,
            [&facade](const json& given, const auto&) {
                std::string found;
                mustHaveWorked(facade.getParamDataAsString(ansiOf(given["name"]), found,
                                                           wholeOf(given["timeoutMs"])));
                return json{{"text", utf8Of(found)}, {"bytes", hexOf(found)}};
            }};
}

Method readingAtOnce(const QorControlFacade& facade) {
    return {"getParamDataAtOnce",
            "Reads several parameters in one exchange, past the cache",
            {text("names", "Names of the parameters").listed(), timeoutMs()},
            {values("values", "An array per name, in the order of the names").listed()},
            Way::inTurn,
            Effect::looks,
            [&facade](const json& given, const auto&) {
                std::vector<std::vector<double>> found;
                mustHaveWorked(facade.getParamDataAtOnce(textsOf(given["names"]), found,
                                                         wholeOf(given["timeoutMs"])));
                json all = json::array();
                for (const auto& each : found) all.push_back(jsonOf(each));
                return json{{"values", std::move(all)}};
            }};
}

Method writing(const QorControlFacade& facade) {
    return {"setParamData",
            "Writes a parameter",
            {paramName(), values("values", "Its values"),
             values("second", "The second array, if it has one").orElse(json::array()),
             values("third", "The third array, if it has one").orElse(json::array()), timeoutMs()},
            {},
            Way::inTurn,
            Effect::changes,
            [&facade](const json& given, const auto&) {
                mustHaveWorked(facade.setParamData(
                    ansiOf(given["name"]), valuesOf(given["values"]), valuesOf(given["second"]),
                    valuesOf(given["third"]), wholeOf(given["timeoutMs"])));
                return json::object();
            }};
}

Method writingDynamic(const QorControlFacade& facade) {
    return {"setDynamicData",
            "Writes a value as text, in QOR's own notation",
            {paramName(), text("value", "The value"), timeoutMs()},
            {},
            Way::inTurn,
            Effect::changes,
            [&facade](const json& given, const auto&) {
                mustHaveWorked(facade.setDynamicData(ansiOf(given["name"]), ansiOf(given["value"]),
                                                     wholeOf(given["timeoutMs"])));
                return json::object();
            }};
}

}  // namespace

Methods parameterMethods(const QorControlFacade& facade) {
    return {describing(facade),    reading(facade), readingText(facade),
            readingAtOnce(facade), writing(facade), writingDynamic(facade)};
}

}  // namespace qorctl::serve
