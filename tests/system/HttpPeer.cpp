#include "HttpPeer.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

#include "Waiting.h"

using nlohmann::json;

namespace {

constexpr unsigned helloMs = 10000;
constexpr unsigned lookMs = 50;

}  // namespace

HttpPeer::HttpPeer(unsigned short port, const std::string& headers)
    : port_(port), headers_(headers), events_(port) {
    events_.takeLittle();
    events_.send(httpRequest("GET", "/events", headers_ + "Accept: text/event-stream\r\n"));
    const HttpAnswer answer = events_.readAnswer(helloMs);
    if (answer.status != 200)
        throw std::runtime_error("no events, but status " + std::to_string(answer.status));
    EXPECT_EQ("text/event-stream", answer.headers.at("content-type").substr(0, 17));
    thread_ = std::thread([this] { follow(); });
    if (!awaitEvent(
            "hello", [](const json&) { return true; }, helloMs)) {
        vanish();
        throw std::runtime_error("no hello");
    }
    hello_ = eventsOf("hello").front();
    name_ = hello_.at("client").get<std::string>();
}

HttpPeer::~HttpPeer() {
    vanish();
}

void HttpPeer::vanish() {
    isOver_ = true;
    if (thread_.joinable()) thread_.join();
    events_.reset();
}

json HttpPeer::exchange(const std::string& message) {
    const HttpAnswer answer = httpExchange(
        port_, httpRequest("POST", "/rpc", headers_ + "X-Qor-Client: " + name_ + "\r\n", message));
    if (answer.status == 204) {
        EXPECT_EQ("", answer.body);
        return {};
    }
    EXPECT_EQ(200, answer.status) << answer.body;
    return json::parse(answer.body, nullptr, false);
}

std::future<json> HttpPeer::begin(const std::string& method, const json& params) {
    return std::async(std::launch::async, [this, text = requestOf(1, method, params).dump()] {
        return exchange(text);
    });
}

// The transfer's own lines (lengths of pieces) stand on lines of their own: the events are those
// between "event:" and the empty line. A piece that begins within a line would break it; the server
// writes whole events.
void HttpPeer::follow() {
    while (!isOver_) {
        if (isStalled_) {
            Sleep(lookMs);
            continue;
        }
        rest_ += events_.readSome(lookMs);
        if (events_.isEnded()) break;
        std::size_t begin = 0;
        for (std::size_t end = 0; (end = rest_.find("\n\n", begin)) != std::string::npos;
             begin = end + 2)
            take(rest_.substr(begin, end - begin));
        rest_.erase(0, begin);
    }
    isEnded_ = true;
}

void HttpPeer::take(const std::string& event) {
    const std::string nameMark = "event: ";
    const std::string dataMark = "\ndata: ";
    const std::size_t name = event.find(nameMark);
    const std::size_t data = event.find(dataMark);
    if (name == std::string::npos || data == std::string::npos) return;
    const std::size_t from = name + nameMark.size();
    note({event.substr(from, data - from), json::parse(event.substr(data + dataMark.size()))});
}
