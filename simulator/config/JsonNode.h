#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "config/Names.h"

namespace simulator {

/// A settings, model or script file is wrong; the text says in which file, where in it and why.
class ConfigError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A JSON value together with the words that lead a reader to it ("engine.json: parameter
/// "IdleSpeed": limits"). Every access checks the type and throws ConfigError with those words.
/// Refers to the document, which must outlive it.
class JsonNode {
public:
    JsonNode(const nlohmann::json& value, std::string where);

    const std::string& where() const { return where_; }
    [[noreturn]] void fail(const std::string& reason) const;

    /// The same value under another name, for lists whose elements have names of their own.
    JsonNode renamed(const std::string& where) const { return {*value_, where}; }

    bool isText() const { return value_->is_string(); }
    bool isNull() const { return value_->is_null(); }
    bool isList() const { return value_->is_array(); }

    std::string text() const;
    double number() const;
    bool boolean() const;
    /// A whole number within the bounds; also a text "0x1F".
    std::int64_t integer(std::int64_t lowest, std::int64_t highest) const;
    std::uint32_t word() const { return static_cast<std::uint32_t>(integer(0, 0xFFFFFFFF)); }
    std::vector<double> numbers() const;
    std::string hexBytes() const;
    std::vector<JsonNode> items() const;
    std::vector<std::pair<std::string, JsonNode>> members() const;

    bool has(const char* key) const;
    JsonNode at(const char* key) const;
    std::string text(const char* key, const std::string& missing) const;
    double number(const char* key, double missing) const;
    bool boolean(const char* key, bool missing) const;
    std::int64_t integer(const char* key, std::int64_t missing, std::int64_t lowest,
                         std::int64_t highest) const;
    /// The elements of a list; none when the key is missing.
    std::vector<JsonNode> items(const char* key) const;

    /// A key that nothing reads is a spelling mistake: refuse it rather than ignore it.
    void allowOnly(const Names& keys) const;
    [[noreturn]] void failUnknownKey(const std::string& key, const Names& known) const;
    /// For a text that is none of the choices.
    [[noreturn]] void failUnknownChoice(const Names& known) const;
    /// For the name of a parameter that the model lacks.
    [[noreturn]] void failUnknownParameter(const std::string& name, const Names& known) const;

private:
    void requireObject() const;

    const nlohmann::json* value_;
    std::string where_;
};

/// Throws ConfigError when the file is missing, unreadable or no JSON.
nlohmann::json readJsonFile(const std::string& path);

}  // namespace simulator
