// "qorctl serve" and a hundred thousand messages of which hardly one is right.

#include <cstdlib>
#include <set>

#include "RandomMessages.h"
#include "ServeScene.h"

using nlohmann::json;

namespace {

constexpr int allMessages = 100000;
constexpr int perBatch = 500;
constexpr std::size_t mostMore = 40u << 20;

class ServeFuzz : public ServeScene {
protected:
    std::size_t answered_ = 0;
    std::map<int, std::size_t> codes_;

    /// Every response is one, by its form and its code.
    void expectResponse(const json& response) {
        ++answered_;
        ASSERT_TRUE(response.is_object()) << response;
        EXPECT_EQ("2.0", response.value("jsonrpc", "")) << response;
        EXPECT_TRUE(response.contains("id")) << response;
        ASSERT_NE(response.contains("result"), response.contains("error")) << response;
        if (response.contains("result")) return;
        const int code = response["error"].at("code");
        static const std::set<int> allowed = {-32700, -32600, -32601, -32602,
                                              -32000, -32001, -32004, -32005};
        EXPECT_TRUE(allowed.count(code) == 1) << response;
        ++codes_[code];
    }
    void expectResponses(const json& responses) {
        if (!responses.is_array()) return expectResponse(responses);
        for (const json& each : responses) expectResponse(each);
    }
    /// One batch and some lines of its own; all that they bring.
    void exchangeSome(RandomMessages& random) {
        std::string lines;
        json batch = json::array();
        for (int i = 0; i < perBatch * 4 / 5; ++i) batch.push_back(random.request());
        lines += batch.dump() + "\n";
        for (int i = 0; i < perBatch / 5; ++i) lines += random.text() + "\n";
        ASSERT_TRUE(process->write(lines + requestOf("mark", "pingQor").dump() + "\n"));
        // Its line is full now and then: the mark itself may be told so.
        ASSERT_FALSE(peer->await("mark").is_null()) << process->errSoFar();
        for (const json& each : peer->takeResponses()) expectResponses(each);
    }
};

/// A new one each time, unless QOR_SERVE_SEED names one that was printed.
unsigned seedOfThisRun() {
    const char* const given = std::getenv("QOR_SERVE_SEED");
    return given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
                            : GetTickCount();
}

INSTANTIATE_TEST_SUITE_P(Over, ServeFuzz, testing::Values(Transport::tcp), transportName);

TEST_P(ServeFuzz, AnswersByTheCodesOfTheProtocolAndKeepsItsMemoryBounded) {
    station.settings.connectMs = 1;
    serve();
    const unsigned seed = seedOfThisRun();
    std::printf("seed %u\n", seed);
    RandomMessages random(seed);
    exchangeSome(random);  // whatever it needs once
    const std::size_t before = process->memory();
    const unsigned took = elapsedMsOf([&] {
        for (int i = 0; i < allMessages / perBatch && !HasFailure(); ++i) exchangeSome(random);
    });
    std::printf("%zu responses in %u ms, memory from %zu to %zu kB\n", answered_, took,
                before / 1024, process->memory() / 1024);
    for (const auto& [code, count] : codes_) std::printf("%d: %zu\n", code, count);
    EXPECT_GT(answered_, allMessages / 2u);
    EXPECT_LT(process->memory(), before + mostMore);
    EXPECT_TRUE(eventually(20000, [&] { return peer->errorOf("pingQor") == 0; }));
    end();
}

}  // namespace
