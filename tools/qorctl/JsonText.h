#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace qorctl {

/// A text of the ANSI code page, as all texts of the library are, as JSON wants it.
std::string utf8Of(const std::string& ansi);

/// The whole object, readable; bytes that are still no UTF-8 are replaced.
std::string printed(const nlohmann::json& object);

/// The same without line breaks, for a stream of one object per line.
std::string printedOnOneLine(const nlohmann::json& object);

}  // namespace qorctl
