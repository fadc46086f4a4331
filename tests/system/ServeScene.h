#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "HttpPeer.h"
#include "RpcPeer.h"
#include "Station.h"
#include "Waiting.h"

/// "qorctl serve" with the settings of a station: it is the host and starts the station's QOR. What
/// a test asks of it comes over standard input.
class ServeScene : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    std::unique_ptr<QorctlProcess> process;
    std::unique_ptr<StdioPeer> peer;
    unsigned short port = 0;

    void TearDown() override {
        if (peer != nullptr) {
            EXPECT_TRUE(peer->oddLines().empty()) << peer->oddLines().front();
        }
        if (process != nullptr && process->isRunning()) {
            end();
        }
    }

    /// Starts the server and waits until QOR answers.
    void serve(const std::vector<std::string>& more = {}) {
        station.writeSettings();
        begin(more);
        ASSERT_TRUE(peer->resultOf("pingQor", {{"timeoutMs", 10000}}).is_object())
            << process->errSoFar();
    }
    /// The same with a QOR that this test has started, and so can end.
    void serveOurs(const std::vector<std::string>& more = {}) {
        station.settings.executable.clear();
        station.writeSettings();
        station.startQorByHand();
        serve(more);
    }
    /// Serves over HTTP as well, on `port`.
    void serveHttp(const std::vector<std::string>& more = {}) {
        std::vector<std::string> words = {"--listen", "127.0.0.1:0"};
        words.insert(words.end(), more.begin(), more.end());
        serve(words);
        const std::string told = "listening on http://127.0.0.1:";
        const std::string err = process->errSoFar();
        const std::size_t at = err.find(told);
        ASSERT_NE(std::string::npos, at) << err;
        port = static_cast<unsigned short>(std::stoi(err.substr(at + told.size())));
    }
    std::unique_ptr<HttpPeer> visitor() { return std::make_unique<HttpPeer>(port); }
    /// A call of somebody who does not stay.
    HttpAnswer post(const std::string& body, const std::string& headers = {}) {
        return httpExchange(port, httpRequest("POST", "/rpc", headers, body));
    }
    HttpAnswer get(const std::string& path, const std::string& headers = {}) {
        return httpExchange(port, httpRequest("GET", path, headers));
    }
    /// Starts the server, with settings that are there.
    void begin(const std::vector<std::string>& more) {
        std::vector<std::string> words = {"serve",
                                          station.settingsPath,
                                          "--stdio",
                                          "--trace",
                                          station.tracePath(),
                                          "--transport",
                                          GetParam() == Transport::tcp ? "tcp" : "window"};
        words.insert(words.end(), more.begin(), more.end());
        process = std::make_unique<QorctlProcess>(words, QorctlProcess::OpenInput());
        peer = std::make_unique<StdioPeer>(*process);
    }
    void connectEcu() {
        peer->resultOf("connect", {{"settings", {{"refreshPeriodMs", 50}}}});
        EXPECT_TRUE(eventually(5000, [&] { return peer->resultOf("getState")["isEcuOnline"]; }));
    }
    /// Past the cache of the library.
    double freshValueOf(const std::string& name) {
        return peer->resultOf("getParamDataAtOnce",
                              nlohmann::json{{"names", {name}}})["values"][0][0];
    }
    /// Ends the input and expects an end in order.
    QorctlProcess::Ended end() {
        process->closeInput();
        const auto ended = process->wait(20000);
        EXPECT_EQ(0, ended.exitCode) << ended.err;
        return ended;
    }
    /// What QOR was asked of direct control: "INDEX start", "INDEX stop".
    std::vector<std::string> controls() const {
        std::vector<std::string> found;
        for (const std::string& line : station.requests()) {
            const std::string index = line.substr(0, line.find(" op="));
            if (line.find("DirectCtrl ") != 0) continue;
            if (line.find(" op=2") != std::string::npos) found.push_back(index + " start");
            if (line.find(" op=3") != std::string::npos) found.push_back(index + " stop");
        }
        return found;
    }
};

/// A response with an error of that code.
MATCHER_P(IsError, code, "") {
    return arg.is_object() && arg.contains("error") && !arg.contains("result") &&
           arg["error"].contains("message") && arg["error"]["code"] == code;
}
