#pragma once

#include <string>
#include <vector>

#include "serve/Method.h"

namespace qorctl::serve {

/// What many methods have.
inline Param text(std::string name, std::string about) {
    return {std::move(name), Kind::text, std::move(about)};
}
inline Param whole(std::string name, std::string about) {
    return {std::move(name), Kind::whole, std::move(about)};
}
inline Param flag(std::string name, std::string about) {
    return {std::move(name), Kind::flag, std::move(about)};
}
inline Param number(std::string name, std::string about) {
    return {std::move(name), Kind::number, std::move(about)};
}
inline Param paramName() {
    return text("name", "Name of the parameter, as QOR knows it");
}
inline Param timeoutMs() {
    return whole("timeoutMs", "Time that QOR has, in milliseconds; the call may take twice that")
        .atMost(60000)
        .orElse(1000);
}

inline unsigned int wholeOf(const nlohmann::json& value) {
    return static_cast<unsigned int>(value.get<double>());
}
inline int signedOf(const nlohmann::json& value) {
    return static_cast<int>(value.get<double>());
}

std::vector<double> valuesOf(const nlohmann::json& numbers);
nlohmann::json jsonOf(const std::vector<double>& values);
std::vector<std::string> textsOf(const nlohmann::json& texts);

}  // namespace qorctl::serve
