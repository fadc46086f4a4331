#include "config/JsonNode.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>

namespace simulator {

namespace {

/// Strips the library's own "[json.exception.parse_error.101] " from its message.
std::string parseMessage(const nlohmann::json::exception& error) {
    const std::string message = error.what();
    const std::size_t end = message.find("] ");
    return end == std::string::npos ? message : message.substr(end + 2);
}

int hexDigit(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return -1;
}

}  // namespace

JsonNode::JsonNode(const nlohmann::json& value, std::string where)
    : value_(&value), where_(std::move(where)) {}

void JsonNode::fail(const std::string& reason) const {
    throw ConfigError(where_ + ": " + reason);
}

std::string JsonNode::text() const {
    if (!value_->is_string()) fail("must be a text");
    return value_->get<std::string>();
}

double JsonNode::number() const {
    if (!value_->is_number()) fail("must be a number");
    return value_->get<double>();
}

bool JsonNode::boolean() const {
    if (!value_->is_boolean()) fail("must be true or false");
    return value_->get<bool>();
}

std::int64_t JsonNode::integer(std::int64_t lowest, std::int64_t highest) const {
    double value = 0.0;
    if (value_->is_string()) {
        const std::string digits = text();
        std::size_t used = 0;
        try {
            value = static_cast<double>(std::stoull(digits, &used, 0));
        } catch (const std::exception&) {
            used = std::string::npos;
        }
        if (used != digits.size()) fail("\"" + digits + "\" is not a whole number");
    } else {
        value = number();
    }
    const bool isWhole = value == std::floor(value);
    if (!isWhole || value < static_cast<double>(lowest) || value > static_cast<double>(highest)) {
        fail("must be a whole number from " + std::to_string(lowest) + " to " +
             std::to_string(highest));
    }
    return static_cast<std::int64_t>(value);
}

std::vector<double> JsonNode::numbers() const {
    std::vector<double> values;
    for (const JsonNode& item : items()) values.push_back(item.number());
    return values;
}

std::string JsonNode::hexBytes() const {
    std::string bytes;
    int high = -1;
    for (const char digit : text()) {
        if (digit == ' ' && high < 0) continue;
        const int value = hexDigit(digit);
        if (value < 0) fail("must be hexadecimal bytes such as \"5A 80\"");
        if (high < 0) {
            high = value;
        } else {
            bytes.push_back(static_cast<char>(high * 16 + value));
            high = -1;
        }
    }
    if (high >= 0) fail("has half a byte at its end");
    return bytes;
}

std::vector<JsonNode> JsonNode::items() const {
    if (!value_->is_array()) fail("must be a list");
    std::vector<JsonNode> nodes;
    for (std::size_t i = 0; i < value_->size(); ++i) {
        nodes.emplace_back((*value_)[i], where_ + "[" + std::to_string(i) + "]");
    }
    return nodes;
}

std::vector<std::pair<std::string, JsonNode>> JsonNode::members() const {
    requireObject();
    std::vector<std::pair<std::string, JsonNode>> nodes;
    for (const auto& [key, value] : value_->items()) {
        nodes.emplace_back(key, JsonNode(value, where_ + ": " + key));
    }
    return nodes;
}

bool JsonNode::has(const char* key) const {
    requireObject();
    return value_->contains(key);
}

JsonNode JsonNode::at(const char* key) const {
    if (!has(key)) fail(std::string("\"") + key + "\" is missing");
    return {(*value_)[key], where_ + ": " + key};
}

std::string JsonNode::text(const char* key, const std::string& missing) const {
    return has(key) ? at(key).text() : missing;
}

double JsonNode::number(const char* key, double missing) const {
    return has(key) ? at(key).number() : missing;
}

bool JsonNode::boolean(const char* key, bool missing) const {
    return has(key) ? at(key).boolean() : missing;
}

std::int64_t JsonNode::integer(const char* key, std::int64_t missing, std::int64_t lowest,
                               std::int64_t highest) const {
    return has(key) ? at(key).integer(lowest, highest) : missing;
}

std::vector<JsonNode> JsonNode::items(const char* key) const {
    return has(key) ? at(key).items() : std::vector<JsonNode>();
}

void JsonNode::allowOnly(const Names& keys) const {
    requireObject();
    for (const auto& member : value_->items()) {
        if (std::find(keys.begin(), keys.end(), member.key()) == keys.end()) {
            failUnknownKey(member.key(), keys);
        }
    }
}

void JsonNode::failUnknownKey(const std::string& key, const Names& known) const {
    fail("unknown key \"" + key + "\"" + hintFor(key, known));
}

void JsonNode::failUnknownChoice(const Names& known) const {
    fail("unknown word \"" + text() + "\"" + hintFor(text(), known));
}

void JsonNode::failUnknownParameter(const std::string& name, const Names& known) const {
    fail("there is no parameter \"" + name + "\"" + hintFor(name, known));
}

void JsonNode::requireObject() const {
    if (!value_->is_object()) fail("must be an object");
}

nlohmann::json readJsonFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw ConfigError(path + ": cannot be opened (" + std::strerror(errno) + ")");
    try {
        return nlohmann::json::parse(file);
    } catch (const nlohmann::json::exception& error) {
        throw ConfigError(path + ": " + parseMessage(error));
    }
}

}  // namespace simulator
