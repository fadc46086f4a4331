#include "RpcPeer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "Waiting.h"

using nlohmann::json;

namespace {

constexpr unsigned answerMs = 30000;

bool hasId(const json& message, const json& id) {
    if (message.is_array())
        return std::any_of(message.begin(), message.end(),
                           [&](const json& each) { return hasId(each, id); });
    return message.contains("id") && message["id"] == id;
}

}  // namespace

json requestOf(const json& id, const std::string& method, const json& params) {
    return {{"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", params}};
}

json RpcPeer::ask(const std::string& method, const json& params) {
    return begin(method, params).get();
}

json RpcPeer::resultOf(const std::string& method, const json& params) {
    const json response = ask(method, params);
    EXPECT_TRUE(response.contains("result")) << method << params << ": " << response;
    return response.is_object() ? response.value("result", json()) : json();
}

int RpcPeer::errorOf(const std::string& method, const json& params) {
    const json response = ask(method, params);
    return response.contains("error") ? response["error"].at("code").get<int>() : 0;
}

std::vector<json> RpcPeer::eventsOf(const std::string& name) {
    look();
    const std::lock_guard<std::mutex> guard(mutex_);
    std::vector<json> found;
    for (const ServerEvent& each : events_)
        if (each.name == name) found.push_back(each.data);
    return found;
}

bool RpcPeer::awaitEvent(const std::string& name, const std::function<bool(const json&)>& isWanted,
                         unsigned timeoutMs) {
    std::size_t seen = 0;
    return eventually(timeoutMs, [&] {
        look();
        const std::lock_guard<std::mutex> guard(mutex_);
        for (; seen < events_.size(); ++seen)
            if (events_[seen].name == name && isWanted(events_[seen].data)) return true;
        return false;
    });
}

std::size_t RpcPeer::countOf(const std::string& name) {
    look();
    const std::lock_guard<std::mutex> guard(mutex_);
    return static_cast<std::size_t>(
        std::count_if(events_.begin(), events_.end(),
                      [&](const ServerEvent& each) { return each.name == name; }));
}

void RpcPeer::note(ServerEvent event) {
    const std::lock_guard<std::mutex> guard(mutex_);
    events_.push_back(std::move(event));
}

json StdioPeer::exchange(const std::string& message) {
    // What is asked in turn is answered in turn, so before the mark comes all there is.
    const json mark = "mark " + std::to_string(++lastId_);
    look();
    responses_.clear();
    process_.write(message + "\n" + requestOf(mark, "pingQor").dump() + "\n");
    EXPECT_FALSE(await(mark).is_null()) << message.substr(0, 200) << process_.errSoFar();
    EXPECT_LE(responses_.size(), 1u) << json(responses_);
    const json response = responses_.empty() ? json() : responses_.front();
    responses_.clear();
    return response;
}

std::future<json> StdioPeer::begin(const std::string& method, const json& params) {
    const unsigned id = ++lastId_;
    process_.write(requestOf(id, method, params).dump() + "\n");
    return std::async(std::launch::deferred, [this, id] { return await(id); });
}

json StdioPeer::await(const json& id, unsigned timeoutMs) {
    json response;
    eventually(timeoutMs, [&] {
        look();
        const auto found = std::find_if(responses_.begin(), responses_.end(),
                                        [&](const json& each) { return hasId(each, id); });
        if (found == responses_.end()) return false;
        response = std::move(*found);
        responses_.erase(found);
        return true;
    });
    return response;
}

std::vector<json> StdioPeer::takeResponses() {
    look();
    return std::exchange(responses_, {});
}

void StdioPeer::look() {
    rest_ += process_.takeOut();
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = rest_.find('\n', begin)) != std::string::npos; begin = end + 1)
        take(rest_.substr(begin, end - begin));
    rest_.erase(0, begin);
}

void StdioPeer::take(const std::string& line) {
    json message = json::parse(line, nullptr, false);
    if (!message.is_structured())
        oddLines_.push_back(line);
    else if (message.is_object() && message.contains("method"))
        note({message["method"], message["params"]});
    else
        responses_.push_back(std::move(message));
}
