#include "serve/KnownNames.h"

#include "JsonText.h"
#include "serve/methods/Common.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;

/// Against clients that ask for ever new names of a QOR that knows them all.
constexpr std::size_t most = 100000;
constexpr std::size_t longest = 1000;

}  // namespace

Methods KnownNames::methods() {
    Param named{"names", Kind::record, "The parameters, by name"};
    named.fields = {text("name", "Its name"),
                    flag("described", "Whether its description is known"),
                    text("meaning", "What it is"),
                    text("unit", "Its unit, or empty"),
                    text("group", "Where it belongs"),
                    flag("threeArrays", "Whether it has two further arrays")};
    return {{"getParamNames",
             "Names that were listed for the server, or have been used with success (QOR has no "
             "list)",
             {},
             {named.listed()},
             Method::Way::atOnce,
             Method::Effect::looks,
             [this](const json&, const auto&) {
                 return json{{"names", all()}};
             }}};
}

void KnownNames::add(const std::vector<std::string>& names) {
    const std::lock_guard<std::mutex> guard(mutex_);
    for (const std::string& name : names) addOne(utf8Of(name));
}

void KnownNames::addOne(const std::string& name) {
    if (descriptions_.size() < most && name.size() <= longest) descriptions_.emplace(name, nullptr);
}

void KnownNames::learn(const Method& method, const json& given, const json& result) {
    // A stream begins whether QOR knows the names or not.
    if (method.way != Method::Way::inTurn || method.isForLasting) return;
    const std::lock_guard<std::mutex> guard(mutex_);
    if (given.contains("name")) addOne(given["name"].get<std::string>());
    if (given.contains("names"))
        for (const json& name : given["names"]) addOne(name.get<std::string>());
    if (method.name != "getParamDescription") return;
    const auto known = descriptions_.find(given["name"].get<std::string>());
    if (known != descriptions_.end()) known->second = result;
}

json KnownNames::all() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    json list = json::array();
    for (const auto& [name, description] : descriptions_) {
        json row = description.is_null()
                       ? json{{"meaning", ""}, {"unit", ""}, {"group", ""}, {"threeArrays", false}}
                       : description;
        row["name"] = name;
        row["described"] = !description.is_null();
        row.erase("mayBelongToEarlier");
        list.push_back(std::move(row));
    }
    return list;
}

}  // namespace qorctl::serve
