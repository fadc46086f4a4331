#pragma once

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace qorctl {

/// `text` with its characters that mean something to HTML made harmless.
std::string htmlOf(const std::string& text);

/// `object` as text that may stand inside a script element: nothing in it can end that element.
std::string scriptJson(const nlohmann::json& object);

/// `page` with each {{name}} replaced by `parts[name]`, which is not looked at again. Throws
/// std::invalid_argument for a name without a part.
std::string filledIn(const std::string& page, const std::map<std::string, std::string>& parts);

/// The same with the parts of a function; what it throws leaves this one.
std::string filledIn(const std::string& page,
                     const std::function<std::string(const std::string& name)>& partOf);

}  // namespace qorctl
