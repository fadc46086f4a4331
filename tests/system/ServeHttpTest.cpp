// "qorctl serve" over HTTP: what it answers, whom it turns away, and what it does with half
// requests and garbage.

#include <exception>
#include <future>
#include <random>
#include <string>
#include <vector>

#include "ServeScene.h"

using nlohmann::json;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::string ping = requestOf(1, "pingQor").dump();

class ServeHttp : public ServeScene {
protected:
    /// The reason in the body of a refusal.
    static std::string reasonOf(const HttpAnswer& answer) {
        return json::parse(answer.body, nullptr, false).value("error", "");
    }
    void expectUnharmed() { EXPECT_EQ(200, post(ping).status); }
    std::string tokenFile(const std::string& text) { return station.folder.write("token", text); }
};

INSTANTIATE_TEST_SUITE_P(Over, ServeHttp, testing::Values(Transport::tcp), transportName);

TEST_P(ServeHttp, AnswersRequestsBatchesAndNotifications) {
    serveHttp();
    const HttpAnswer answer = post(ping);
    EXPECT_EQ(200, answer.status);
    EXPECT_THAT(answer.headers.at("content-type"), HasSubstr("application/json"));
    EXPECT_EQ(json::parse(R"({"jsonrpc":"2.0","id":1,"result":{}})"), json::parse(answer.body));
    EXPECT_EQ(2u, json::parse(post("[" + ping + "," + ping + "]").body).size());
    const HttpAnswer none = post(R"({"jsonrpc":"2.0","method":"pingQor"})");
    EXPECT_EQ(204, none.status);
    EXPECT_EQ("", none.body);
    EXPECT_EQ(-32700, json::parse(post("{").body)["error"]["code"]);
    EXPECT_EQ(-32700, json::parse(post("").body)["error"]["code"]);
}

TEST_P(ServeHttp, HasItsPageItsDescriptionAndItsFigures) {
    serveHttp();
    EXPECT_THAT(get("/").headers.at("content-type"), HasSubstr("text/html"));
    const json document = json::parse(get("/openrpc.json").body);
    EXPECT_EQ(peer->resultOf("rpc.discover"), document);
    const HttpAnswer figures = get("/metrics");
    EXPECT_EQ("text/plain; version=0.0.4; charset=utf-8", figures.headers.at("content-type"));
    EXPECT_THAT(figures.body, HasSubstr("# TYPE"));
    for (const char* const path :
         {"/rpc", "/index.html", "/../qorctl.exe", "/%2e%2e/%2e%2e/etc/passwd", "//", "/events/x",
          "/openrpc.json/", "/c:/windows/win.ini"})
        EXPECT_EQ(404, get(path).status) << path;
    for (const char* const method : {"PUT", "DELETE", "PATCH", "OPTIONS"})
        EXPECT_THAT(httpExchange(port, httpRequest(method, "/rpc", {}, ping)).status,
                    AnyOf(404, 405, 415))
            << method;
}

TEST_P(ServeHttp, KeepsAConnectionForTheNextRequest) {
    serveHttp();
    HttpClient client(port);
    for (int i = 0; i < 20; ++i) {
        client.send(httpRequest("POST", "/rpc", {}, requestOf(i, "pingQor").dump()));
        EXPECT_EQ(i, json::parse(client.readAnswer().body)["id"]);
    }
    // Several at once are answered in their order.
    std::string many;
    for (int i = 0; i < 20; ++i)
        many += httpRequest("POST", "/rpc", {}, requestOf(i, "pingQor").dump());
    client.send(many);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(i, json::parse(client.readAnswer().body)["id"]);
    client.send(httpRequest("POST", "/rpc", "Connection: close\r\n", ping));
    EXPECT_EQ(200, client.readAnswer().status);
    EXPECT_TRUE(client.isClosedWithin(2000));
}

TEST_P(ServeHttp, TurnsForeignPagesAway) {
    serveHttp({"--allow-host", "bench-seven"});
    const std::string at = ":" + std::to_string(port);
    EXPECT_EQ(200, post(ping, "Host: localhost" + at + "\r\n").status);
    EXPECT_EQ(200, post(ping, "Host: 127.0.0.1" + at + "\r\n").status);
    EXPECT_EQ(200, post(ping, "Host: bench-seven" + at + "\r\n").status);
    for (const char* const host : {"evil.example", "evil.example:80", "localhost.evil.example",
                                   "bench-seven.evil", "127.0.0.1.evil.example", "1.2.3", ""})
        EXPECT_EQ(403, post(ping, std::string("Host: ") + host + "\r\n").status) << host;
    const auto from = [&](const std::string& origin) {
        return "Host: localhost" + at + "\r\nOrigin: " + origin + "\r\n";
    };
    EXPECT_EQ(200, post(ping, from("http://localhost" + at)).status);
    for (const std::string& origin :
         {std::string("http://evil.example"), std::string("null"), "https://localhost" + at,
          std::string("http://localhost"), "http://localhost" + at + ".evil.example",
          "http://127.0.0.1" + at}) {
        EXPECT_EQ(403, post(ping, from(origin)).status) << origin;
        EXPECT_EQ(403, get("/events", from(origin)).status) << origin;
        EXPECT_EQ(403, get("/metrics", from(origin)).status) << origin;
    }
    EXPECT_EQ(403, httpExchange(port, "GET /metrics HTTP/1.1\r\n\r\n").status) << "no host at all";
    const HttpAnswer answer = post(ping, from("http://evil.example"));
    EXPECT_NE("", reasonOf(answer));
    EXPECT_EQ(0u, answer.headers.count("access-control-allow-origin"));
}

TEST_P(ServeHttp, TakesNothingButJson) {
    serveHttp();
    for (const char* const type :
         {"text/plain", "application/x-www-form-urlencoded", "multipart/form-data; boundary=x",
          "application/jsonx", "x-application/json", "text/plain; application/json", ""})
        EXPECT_EQ(415, post(ping, std::string("Content-Type: ") + type + "\r\n").status) << type;
    EXPECT_EQ(200, post(ping, "Content-Type: application/json; charset=utf-8\r\n").status);
    EXPECT_EQ(200, post(ping, "Content-Type: Application/JSON\r\n").status);
    EXPECT_EQ(415, httpExchange(
                       port, "POST /rpc HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 2\r\n\r\n{}")
                       .status);
}

TEST_P(ServeHttp, WantsItsTokenIfItHasOne) {
    const std::string token = "0123456789abcdef-the-token";
    serveHttp({"--token-file", tokenFile(token + "\r\nsecond line")});
    const auto with = [](const std::string& text) { return "Authorization: " + text + "\r\n"; };
    EXPECT_EQ(200, post(ping, with("Bearer " + token)).status);
    EXPECT_EQ(200, get("/metrics", with("Bearer " + token)).status);
    EXPECT_EQ(200, get("/").status);  // it asks for it
    const std::vector<std::string> wrongs = {"",
                                             "Bearer",
                                             "Bearer ",
                                             "Bearer " + token + "x",
                                             "Bearer " + token.substr(1),
                                             "Bearer " + token.substr(0, 25),
                                             "Basic " + token,
                                             token,
                                             "Bearer " + std::string(5000, '0')};
    for (const std::string& wrong : wrongs) {
        EXPECT_EQ(401, post(ping, with(wrong)).status) << wrong;
        for (const char* const path : {"/metrics", "/events", "/openrpc.json", "/nothing"})
            EXPECT_EQ(401, get(path, with(wrong)).status) << path << wrong;
    }
    EXPECT_EQ(401, post(ping).status);
    HttpPeer stays(port, with("Bearer " + token));
    EXPECT_TRUE(stays.resultOf("pingQor").is_object());
}

TEST_P(ServeHttp, ListensBeyondThisMachineOnlyWithAToken) {
    station.writeSettings();
    const auto refusedWith = [&](const std::vector<std::string>& more) {
        std::vector<std::string> words = {"serve", station.settingsPath, "--trace",
                                          station.tracePath()};
        words.insert(words.end(), more.begin(), more.end());
        return runQorctl(words);
    };
    EXPECT_NE(0, refusedWith({}).exitCode);
    for (const char* const address : {"0.0.0.0:0", "192.168.1.1:0", "nonsense", "127.0.0.1:99999",
                                      "127.0.0.1:-1", "127.0.0.1:"})
        EXPECT_NE(0, refusedWith({"--listen", address}).exitCode) << address;
    EXPECT_NE(0, refusedWith({"--listen", "0", "--token-file", tokenFile("short")}).exitCode);
    EXPECT_NE(0, refusedWith({"--listen", "0", "--token-file", tokenFile("")}).exitCode);
    EXPECT_NE(0,
              refusedWith({"--listen", "0", "--token-file", station.folder.pathOf("there is none")})
                  .exitCode);
    EXPECT_THAT(readWireLog(station.settings.recordLog), testing::IsEmpty()) << "QOR was begun";
}

TEST_P(ServeHttp, TellsThatItsPortIsTaken) {
    serveHttp();
    station.writeSettings();
    const auto second =
        runQorctl({"serve", station.settingsPath, "--trace", station.folder.pathOf("second.log"),
                   "--listen", std::to_string(port)});
    EXPECT_NE(0, second.exitCode);
    EXPECT_THAT(second.err, HasSubstr(std::to_string(port)));
    expectUnharmed();
}

TEST_P(ServeHttp, BoundsWhatOneMaySend) {
    serveHttp();
    EXPECT_EQ(413, post(std::string((8u << 20) + 1, ' ')).status);
    const std::string head =
        "POST /rpc HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n";
    for (const char* const length : {"8388609", "99999999999", "99999999999999999999999"})
        EXPECT_EQ(413,
                  httpExchange(port, head + "Content-Length: " + length + "\r\n\r\n", 5000).status)
            << length;
    EXPECT_EQ(200, post(ping + std::string((8u << 20) - ping.size(), ' ')).status);
    EXPECT_THAT(get("/metrics", "X-Long: " + std::string(20000, 'x') + "\r\n").status,
                AnyOf(400, 431));
    std::string many;
    for (int i = 0; i < 3000; ++i) many += "X-" + std::to_string(i) + ": 1234567890\r\n";
    EXPECT_EQ(431, get("/metrics", many).status);
    EXPECT_THAT(get("/" + std::string(20000, 'x')).status, AnyOf(404, 414, 431));
    EXPECT_THAT(get("/" + std::string(200000, 'x')).status, AnyOf(414, 431));
    expectUnharmed();
}

TEST_P(ServeHttp, ReadsABodyInPiecesAndBoundsThatToo) {
    serveHttp();
    const std::string head =
        "POST /rpc HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
        "Transfer-Encoding: chunked\r\n\r\n";
    EXPECT_EQ(200, httpExchange(port, head + "2\r\n{}\r\n0\r\n\r\n").status);
    HttpClient endless(port);
    endless.send(head);
    const std::string piece = "10000\r\n" + std::string(0x10000, ' ') + "\r\n";
    int pieces = 0;
    const std::size_t before = process->memory();
    while (pieces < 2000 && endless.send(piece)) ++pieces;
    EXPECT_LT(pieces, 400);
    EXPECT_LT(process->memory(), before + (60u << 20));
    for (const char* const bad : {"zz\r\n{}\r\n", "-1\r\n", "ffffffffffffffffff\r\nx", "2\r\n{}"})
        EXPECT_NE(200, httpExchange(port, head + bad, 1000).status) << bad;
    expectUnharmed();
}

TEST_P(ServeHttp, EndsConnectionsWhoseRequestDoesNotCome) {
    serveHttp();
    HttpClient head(port);
    head.send("POST /rpc HTTP/1.1\r\nHost: 127");
    HttpClient body(port);
    body.send(
        "POST /rpc HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
        "Content-Length: 100\r\n\r\n{\"json");
    HttpClient ended(port);
    ended.send(httpRequest("POST", "/rpc", {}, ping).substr(0, 120));
    ended.endSending();
    EXPECT_TRUE(ended.isClosedWithin(5000));
    HttpClient nothing(port);
    expectUnharmed();
    EXPECT_TRUE(head.isClosedWithin(20000));
    EXPECT_TRUE(nothing.isClosedWithin(20000));
    EXPECT_TRUE(body.isClosedWithin(40000));
    expectUnharmed();
}

TEST_P(ServeHttp, TellsAClientThatAsksBeforeItSendsToGoOn) {
    serveHttp();
    HttpClient client(port);
    const std::string whole = httpRequest("POST", "/rpc", "Expect: 100-continue\r\n", ping);
    const std::size_t head = whole.find("\r\n\r\n") + 4;
    client.send(whole.substr(0, head));
    EXPECT_EQ(100, client.readAnswer(3000).status);
    client.send(whole.substr(head));
    EXPECT_EQ(200, client.readAnswer(3000).status);
}

TEST_P(ServeHttp, ReadsRequestsThatComeByteByByte) {
    serveHttp();
    HttpClient client(port);
    for (const char each : httpRequest("POST", "/rpc", {}, ping)) client.send(std::string(1, each));
    EXPECT_EQ(200, client.readAnswer().status);
}

/// Bytes that are hardly a request.
std::string garbage(std::mt19937& random) {
    std::string text = random() % 4 == 0 ? std::string(random() % 400, ' ')
                                         : httpRequest("POST", "/rpc", "X-Qor-Client: x\r\n", ping);
    for (unsigned i = 0; i < 1 + random() % 8 && !text.empty(); ++i) {
        const std::size_t at = random() % text.size();
        if (random() % 3 == 0)
            text.erase(at, random() % 30);
        else if (random() % 2 == 0)
            text.insert(at, std::string(random() % 50, static_cast<char>(random())));
        else
            text[at] = static_cast<char>(random());
    }
    return text;
}

// The library behind it matches such texts by a pattern that goes as deep as they are long.
TEST_P(ServeHttp, OutlivesHeadsAndBodiesThatItsLibraryWouldNot) {
    serveHttp();
    std::string ranges = "bytes=0-";
    while (ranges.size() < 15000) ranges += ",0-";
    EXPECT_EQ(200, get("/openrpc.json", "Range: " + ranges + "\r\n").status);
    // To the library a line ends with a LF alone, too.
    EXPECT_EQ(400, get("/openrpc.json", "X: y\nRange: " + ranges + "\r\n").status);
    expectUnharmed();
    const std::string form = "--b\r\nContent-Disposition: form-data; name=\"" +
                             std::string(16000, 'a') + "\r\n\r\nx\r\n--b--\r\n";
    for (const char* method : {"PUT", "PATCH", "DELETE", "POST"}) {
        const int status =
            httpExchange(port,
                         httpRequest(method, "/rpc",
                                     "Content-Type: multipart/form-data; boundary=b\r\n", form))
                .status;
        EXPECT_THAT(status, AnyOf(405, 415)) << method;
    }
    expectUnharmed();
}

TEST_P(ServeHttp, RefusesMoreLongBodiesAtOnceThanItHasMemoryFor) {
    serveHttp();
    std::string numbers = "[1";
    while (numbers.size() < 7u << 20) numbers += ",1";
    const std::string request = httpRequest("POST", "/rpc", {}, numbers + "]");
    std::vector<std::future<int>> statuses;
    for (int i = 0; i < 12; ++i)
        statuses.push_back(std::async(std::launch::async, [&] {
            try {
                return httpExchange(port, request).status;
            } catch (const std::exception&) {
                return 0;  // it was turned away before it had sent all
            }
        }));
    for (auto& each : statuses) EXPECT_THAT(each.get(), AnyOf(0, 200, 503));
    expectUnharmed();
}

// QOR does not answer when it is asked to take it back: it may be driven still. (A window that
// takes a message has answered.)
TEST_P(ServeHttp, KeepsAnActuatorOfWhoHasGoneUntilQorHasAnsweredThatItIsGivenBack) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":3,"nth":1},
                                   "action":{"answer":"silent"}}]})";
    serveHttp();
    auto one = visitor();
    one->resultOf("startDirectCtrl", {{"name", "CoolingFan"}});
    one.reset();
    const auto count = [&] { return peer->resultOf("getServerStatus")["controls"].size(); };
    EXPECT_TRUE(eventually(5000, [&] { return controls().size() == 2; }));  // a start and a stop
    EXPECT_EQ(1u, count());
    EXPECT_TRUE(eventually(10000, [&] { return controls().size() == 3; }));
    EXPECT_TRUE(eventually(2000, [&] { return count() == 0; }));
    EXPECT_THAT(end().err, Not(HasSubstr("NOT GIVEN BACK")));
}

TEST_P(ServeHttp, OutlivesGarbage) {
    serveHttp();
    const unsigned seed = GetTickCount();
    std::printf("seed %u\n", seed);
    std::mt19937 random(seed);
    const std::size_t before = process->memory();
    for (int i = 0; i < 2000; ++i) {
        HttpClient client(port);
        client.send(garbage(random));
        if (i % 3 == 0) client.reset();
        if (i % 3 == 1) client.endSending();
        if (i % 3 == 1) client.readAnswer(2000);
    }
    expectUnharmed();
    EXPECT_LT(process->memory(), before + (60u << 20));
    EXPECT_TRUE(peer->resultOf("pingQor").is_object());
}

}  // namespace
