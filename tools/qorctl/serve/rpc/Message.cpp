#include "serve/rpc/Message.h"

#include <utility>

namespace qorctl::serve {
namespace {

using nlohmann::json;

constexpr int deepest = 64;
constexpr std::size_t longestBatch = 1000;
constexpr std::size_t longestNumber = 1000;  // characters

/// Outside of texts. The time for a number grows with the square of its length.
bool hasEndlessNumber(const std::string& text) {
    bool isText = false;
    std::size_t length = 0;
    for (std::size_t i = 0; i < text.size() && length <= longestNumber; ++i) {
        const char each = text[i];
        if (isText && each == '\\')
            ++i;
        else if (each == '"')
            isText = !isText;
        length = !isText && ((each >= '0' && each <= '9') || each == '.') ? length + 1 : 0;
    }
    return length > longestNumber;
}

/// Null if it is no JSON, or too deep for a parser that calls itself.
json parsed(const std::string& text, bool& isTooDeep) {
    const json::parser_callback_t guard = [&](int depth, json::parse_event_t, json&) {
        if (depth > deepest) isTooDeep = true;
        return !isTooDeep;
    };
    json document = json::parse(text, guard, false);
    return document;
}

Request broken(RpcCode code, std::string why) {
    Request request;
    request.failure = Failure{code, std::move(why)};
    return request;
}

bool isId(const json& id) {
    return id.is_string() || id.is_number() || id.is_null();
}

const char* whyNoRequest(const json& given) {
    if (!given.is_object()) return "a request is an object";
    const auto version = given.find("jsonrpc");
    if (version == given.end() || *version != "2.0") return "\"jsonrpc\" must be \"2.0\"";
    const auto method = given.find("method");
    if (method == given.end() || !method->is_string()) return "\"method\" must be a text";
    const auto params = given.find("params");
    if (params != given.end() && !params->is_structured())
        return "\"params\" must be an object or an array";
    const auto id = given.find("id");
    if (id != given.end() && !isId(*id)) return "\"id\" must be a text or a number";
    return nullptr;
}

Request requestOf(json&& given) {
    if (const char* const why = whyNoRequest(given)) {
        Request request = broken(RpcCode::invalidRequest, why);
        if (given.is_object() && given.contains("id") && isId(given["id"]))
            request.id = given["id"];
        return request;
    }
    Request request;
    request.isNotification = !given.contains("id");
    if (!request.isNotification) request.id = std::move(given["id"]);
    request.method = given["method"].get<std::string>();
    if (given.contains("params")) request.params = std::move(given["params"]);
    return request;
}

Message single(Request request) {
    Message message;
    message.requests.push_back(std::move(request));
    return message;
}

}  // namespace

Message messageOf(const std::string& text) {
    if (hasEndlessNumber(text))
        return single(broken(RpcCode::parseError, "a number has more than 1000 characters"));
    bool isTooDeep = false;
    json document = parsed(text, isTooDeep);
    if (isTooDeep) return single(broken(RpcCode::parseError, "the message is nested too deeply"));
    if (document.is_discarded())
        return single(broken(RpcCode::parseError, "the message is no JSON"));
    if (!document.is_array()) return single(requestOf(std::move(document)));
    if (document.empty()) return single(broken(RpcCode::invalidRequest, "the batch is empty"));
    if (document.size() > longestBatch)
        return single(broken(RpcCode::invalidRequest, "the batch has more than 1000 requests"));
    Message message;
    message.isBatch = true;
    for (json& each : document) message.requests.push_back(requestOf(std::move(each)));
    return message;
}

json responseOf(const json& id, json result) {
    return {{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}};
}

json responseOf(const json& id, const Failure& failure) {
    json error = {{"code", static_cast<int>(failure.code)}, {"message", failure.message}};
    if (!failure.data.is_null()) error["data"] = failure.data;
    return {{"jsonrpc", "2.0"}, {"id", id}, {"error", std::move(error)}};
}

json notificationOf(const char* method, json params) {
    return {{"jsonrpc", "2.0"}, {"method", method}, {"params", std::move(params)}};
}

}  // namespace qorctl::serve
