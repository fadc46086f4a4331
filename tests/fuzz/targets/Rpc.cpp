// A message of a client of "qorctl serve": taken apart, held against the row of its method, and
// answered. Each request gets its answer, in words that are JSON again.
#include <algorithm>
#include <cmath>

#include "serve/rpc/Message.h"
#include "serve/rpc/Param.h"
#include "Target.h"

namespace {

using nlohmann::json;
using qorctl::serve::Failure;
using qorctl::serve::Kind;
using qorctl::serve::Param;
using qorctl::serve::Params;
using qorctl::serve::Request;

/// Rows that hold all there is to be in one; a request's method chooses one by its length.
const std::vector<Params>& rows() {
    static const auto* const all = [] {
        Param record{"record", Kind::record, "An object"};
        record.fields = {{"id", Kind::whole, "A number"},
                         Param{"value", Kind::signedWhole, "Another"}.orElse(-1)};
        Param choice{"choice", Kind::choice, "A word"};
        choice.choices = {"default", "security", "alternative"};
        return new std::vector<Params>{
            {},
            {{"name", Kind::text, "A text"},
             Param{"timeoutMs", Kind::whole, "A time"}.atMost(60000).orElse(1000)},
            {{"names", Kind::text, "Texts", 1}, {"values", Kind::number, "Numbers", 2}},
            {{"bytes", Kind::bytes, "Bytes"}, Param{"flag", Kind::flag, "A flag"}.orElse(false)},
            {record.listed(), choice.orElse("default"),
             Param{"texts", Kind::textMap, "Texts by names"}.orElse(json::object())}};
    }();
    return *all;
}

void checkAgain(const Params& row, const json& checked) {
    FUZZ_REQUIRE(checked.is_object() && checked.size() == row.size());
    for (const Param& each : row) FUZZ_REQUIRE(checked.contains(each.name));
    FUZZ_REQUIRE(qorctl::serve::argumentsOf(row, checked) == checked);
}

json answerTo(const Request& request) {
    if (request.failure) return qorctl::serve::responseOf(request.id, *request.failure);
    const Params& row = rows()[request.method.size() % rows().size()];
    json checked;
    try {
        checked = qorctl::serve::argumentsOf(row, request.params);
    } catch (const Failure& failure) {
        FUZZ_REQUIRE(!failure.message.empty());
        return qorctl::serve::responseOf(request.id, failure);
    }
    checkAgain(row, checked);
    return qorctl::serve::responseOf(request.id, checked);
}

/// What is not finite is null in the text.
bool holdsNoNumber(const json& value) {
    if (value.is_number_float()) return !std::isfinite(value.get<double>());
    return value.is_structured() && std::any_of(value.begin(), value.end(), holdsNoNumber);
}

void tryOne(std::string_view bytes) {
    const auto message = qorctl::serve::messageOf(std::string(bytes));
    FUZZ_REQUIRE(!message.requests.empty());
    FUZZ_REQUIRE(message.isBatch || message.requests.size() == 1);
    for (const Request& request : message.requests) {
        const json answer = answerTo(request);
        FUZZ_REQUIRE(answer.contains("result") != answer.contains("error"));
        const json again = json::parse(answer.dump());
        FUZZ_REQUIRE(again.at("id") == answer.at("id"));
        if (answer.contains("error"))
            FUZZ_REQUIRE(again.at("error").at("code") == answer.at("error").at("code"));
        else
            FUZZ_REQUIRE(again == answer || holdsNoNumber(answer.at("result")));
    }
}

const fuzz::Registered registered({"rpc", tryOne});

}  // namespace
