#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace qorctl::serve {

/// What a parameter of a method is made of, on the wire and for who reads the description.
enum class Kind {
    text,         ///< UTF-8; the library gets it in the ANSI code page
    bytes,        ///< two hexadecimal digits each, with or without blanks
    whole,        ///< 0 to 4294967295
    signedWhole,  ///< -2147483648 to 2147483647
    flag,
    number,  ///< also "NaN", "Infinity" and "-Infinity", which JSON has no numbers for
    choice,  ///< one of the texts in `choices`
    record,  ///< an object of `fields`
    textMap  ///< an object of texts under any names
};

/// One parameter of a method, or one field of a record. The one place where it is written down:
/// what a request brings is checked by it, and the description of the server is made of it.
// NOLINTNEXTLINE(bugprone-exception-escape): what it makes of the checks inside of a json's move
struct Param {
    std::string name;
    Kind kind = Kind::text;
    std::string about;
    unsigned int lists = 0;  ///< 1: an array of these, 2: an array of such arrays
    bool isRequired = true;
    nlohmann::json standard = nullptr;  ///< where it is not required: what is taken
    std::vector<std::string> choices = {};
    std::vector<Param> fields = {};
    std::uint32_t most = 4294967295u;  ///< of a whole number

    Param orElse(nlohmann::json value) const;
    Param listed() const;
    Param atMost(std::uint32_t largest) const;
};
using Params = std::vector<Param>;

/// What a request brings as "params", by name or by position, as an object with all parameters:
/// what is missing has its standard. Throws a Failure that names what is wrong and where.
nlohmann::json argumentsOf(const Params& params, const nlohmann::json& given);

/// Of one parameter, in the words of JSON Schema.
nlohmann::json schemaOf(const Param& param);

}  // namespace qorctl::serve
