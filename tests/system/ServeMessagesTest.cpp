// What "qorctl serve" does with messages of all kinds, good and bad.

#include <string>

#include "ServeScene.h"

using nlohmann::json;
using testing::HasSubstr;

namespace {

constexpr int parseError = -32700;
constexpr int invalidRequest = -32600;
constexpr int methodNotFound = -32601;
constexpr int invalidParams = -32602;

class ServeMessages : public ServeScene {};

// What messages are does not depend on how QOR is spoken to.
INSTANTIATE_TEST_SUITE_P(Over, ServeMessages, testing::Values(Transport::tcp), transportName);

TEST_P(ServeMessages, HaveIdsOfAllKindsWhichComeBackAsTheyWere) {
    serve();
    for (const char* const id :
         {"1", "-7", "0", "\"\"", "\"a text\"", "\"\\u0000\\u00e4\\ud83d\\ude00\"", "null", "2.5",
          "9007199254740993", "18446744073709551615", "-9223372036854775808", "1e300"}) {
        const json answer =
            peer->exchange(R"({"jsonrpc":"2.0","method":"getState","id":)" + std::string(id) + "}");
        ASSERT_TRUE(answer.is_object()) << id;
        EXPECT_EQ(json::parse(id), answer["id"]);
        EXPECT_EQ("2.0", answer["jsonrpc"]);
        EXPECT_TRUE(answer.contains("result"));
    }
    for (const char* const id : {"true", "{}", "[]", "[1]"})
        EXPECT_THAT(
            peer->exchange(R"({"jsonrpc":"2.0","method":"getState","id":)" + std::string(id) + "}"),
            IsError(invalidRequest))
            << id;
}

TEST_P(ServeMessages, WithoutIdAreNotificationsThatAreCarriedOutAndNeverAnswered) {
    serve();
    EXPECT_EQ(json(), peer->exchange(R"({"jsonrpc":"2.0","method":"getState"})"));
    EXPECT_EQ(json(), peer->exchange(R"({"jsonrpc":"2.0","method":"nobody"})"));
    EXPECT_EQ(json(), peer->exchange(R"({"jsonrpc":"2.0","method":"getParamData","params":[1]})"));
    EXPECT_EQ(json(), peer->exchange(R"({"jsonrpc":"2.0","method":"setParamData",)"
                                     R"("params":{"name":"IdleSpeedTarget","values":[777]}})"));
    EXPECT_EQ(777, peer->resultOf("getParamData", {"IdleSpeedTarget"})["values"][0]);
}

TEST_P(ServeMessages, ThatAreBatchesAreAnsweredTogether) {
    serve();
    json batch = {requestOf(1, "getState"),
                  requestOf("two", "getParamData", {"IdleSpeedTarget"}),
                  requestOf(3, "nobody"),
                  7,
                  {{"jsonrpc", "2.0"}, {"method", "getState"}},
                  requestOf(4, "pingQor")};
    const json answers = peer->exchange(batch.dump());
    ASSERT_TRUE(answers.is_array()) << answers;
    ASSERT_EQ(5u, answers.size()) << answers;
    std::map<std::string, json> byId;
    for (const json& each : answers) byId[each["id"].dump()] = each;
    EXPECT_TRUE(byId["1"].contains("result"));
    EXPECT_EQ(850, byId["\"two\""]["result"]["values"][0]);
    EXPECT_THAT(byId["3"], IsError(methodNotFound));
    EXPECT_THAT(byId["null"], IsError(invalidRequest));
    EXPECT_EQ(json::object(), byId["4"]["result"]);
}

TEST_P(ServeMessages, ThatAreBatchesOfNotificationsAreNotAnswered) {
    serve();
    EXPECT_EQ(json(), peer->exchange(R"([{"jsonrpc":"2.0","method":"getState"},)"
                                     R"({"jsonrpc":"2.0","method":"pingQor"}])"));
}

TEST_P(ServeMessages, ThatAreNoRequestsAreRefusedByTheCodesOfTheProtocol) {
    serve();
    const std::pair<const char*, int> rows[] = {
        {"{", parseError},
        {"nonsense", parseError},
        {R"({"jsonrpc":"2.0","method":"getState","id":1)", parseError},
        {R"({"jsonrpc":"2.0","method":"getState","id":1}})", parseError},
        {R"({"jsonrpc":"2.0","method":"getState","id":1,})", parseError},
        {R"({"jsonrpc":"2.0","method":"getState","id":01})", parseError},
        {R"({"jsonrpc":"2.0","method":"getState","id":1e999})", parseError},
        {R"({"jsonrpc":"2.0","method":"getState","id":NaN})", parseError},
        {R"({'jsonrpc':'2.0'})", parseError},
        {"{\"jsonrpc\":\"2.0\",\"method\":\"\xC3\x28\",\"id\":1}", parseError},
        {"{\"jsonrpc\":\"2.0\",\"method\":\"\xED\xA0\x80\",\"id\":1}", parseError},
        {R"({"jsonrpc":"2.0","method":"\ud800","id":1})", parseError},
        {"\x01\x02\x03", parseError},
        {"\xEF\xBB\xBFxyz", parseError},
        {"GET / HTTP/1.1", parseError},
        {"[]", invalidRequest},
        {"null", invalidRequest},
        {"17", invalidRequest},
        {"\"text\"", invalidRequest},
        {"{}", invalidRequest},
        {R"({"method":"getState","id":1})", invalidRequest},
        {R"({"jsonrpc":"1.0","method":"getState","id":1})", invalidRequest},
        {R"({"jsonrpc":2.0,"method":"getState","id":1})", invalidRequest},
        {R"({"jsonrpc":"2.0","method":5,"id":1})", invalidRequest},
        {R"({"jsonrpc":"2.0","method":"getState","params":"x","id":1})", invalidRequest},
        {R"({"jsonrpc":"2.0","method":"getState","params":null,"id":1})", invalidRequest},
        {R"({"jsonrpc":"2.0","method":"GetState","id":1})", methodNotFound},
        {R"({"jsonrpc":"2.0","method":"","id":1})", methodNotFound}};
    for (const auto& [text, code] : rows) EXPECT_THAT(peer->exchange(text), IsError(code)) << text;
    EXPECT_TRUE(peer->resultOf("getState").is_object());
}

TEST_P(ServeMessages, ThatAreRefusedHaveTheIdIfItCouldBeRead) {
    serve();
    EXPECT_EQ(json(nullptr), peer->exchange("{")["id"]);
    EXPECT_EQ(5, peer->exchange(R"({"jsonrpc":"2.0","method":1,"id":5})")["id"]);
    EXPECT_EQ(6, peer->exchange(R"({"jsonrpc":"2.0","method":"no","id":6})")["id"]);
}

TEST_P(ServeMessages, OfEmptyLinesAreNone) {
    serve();
    EXPECT_EQ(json(), peer->exchange(""));
    EXPECT_EQ(json(), peer->exchange(" \t \r"));
    EXPECT_TRUE(peer->exchange(requestOf(1, "getState").dump() + "\r").is_object());
}

TEST_P(ServeMessages, WithDeepNestingEndNothing) {
    serve();
    for (const std::size_t depth : {100u, 10000u, 2000000u}) {
        const std::string open(depth, '[');
        EXPECT_THAT(peer->exchange(open), IsError(parseError));
        EXPECT_THAT(peer->exchange(open + std::string(depth, ']')), IsError(parseError));
        std::string objects;
        for (std::size_t i = 0; i < depth / 10; ++i) objects += R"({"a":)";
        EXPECT_THAT(peer->exchange(objects), IsError(parseError));
    }
    EXPECT_TRUE(peer->resultOf("getState").is_object());
}

TEST_P(ServeMessages, OfManyMegabytesAreReadOrRefused) {
    serve();
    const std::string name(8u << 20, 'x');
    const json answer = peer->exchange(requestOf(1, "getParamData", {name}).dump());
    EXPECT_TRUE(answer.is_object() && answer.contains("error"));
    const std::string tooLong(70u << 20, ' ');
    EXPECT_THAT(peer->exchange(R"({"a":)" + tooLong + "}"), IsError(parseError));
    EXPECT_TRUE(peer->resultOf("getState").is_object());
}

// To read a number of so many digits can take minutes.
TEST_P(ServeMessages, WithEndlessNumbersAreRefusedAtOnce) {
    serve();
    const std::string digits(4u << 20, '3');
    EXPECT_LT(elapsedMsOf([&] {
                  for (const char* const before : {"", "-", "0.", "1e"})
                      EXPECT_THAT(peer->exchange(R"({"jsonrpc":"2.0","method":"getState","id":)" +
                                                 (before + digits) + "}"),
                                  IsError(parseError))
                          << before;
              }),
              4000u);
    // Texts may be as long as they like, whatever stands in them.
    const std::string text = "\\\"" + std::string(5000, '7');
    EXPECT_THAT(peer->exchange(R"({"jsonrpc":"2.0","id":1,"method":")" + text + "\"}"),
                IsError(methodNotFound));
}

// As long as what is asked for is compared with what there is, it must not take its length.
TEST_P(ServeMessages, WithNamesOfAMegabyteAreAnsweredAtOnce) {
    serve();
    const std::string name(1u << 20, 'm');
    EXPECT_LT(elapsedMsOf([&] {
                  EXPECT_THAT(peer->exchange(requestOf(1, name).dump()), IsError(methodNotFound));
                  EXPECT_THAT(peer->exchange(requestOf(1, "getParamData", {{name, 1}}).dump()),
                              IsError(invalidParams));
              }),
              2000u);
}

TEST_P(ServeMessages, OfTooLargeABatchAreRefusedAsAWhole) {
    serve();
    const json batch(1001, requestOf(1, "getState"));
    EXPECT_THAT(peer->exchange(batch.dump()), IsError(invalidRequest));
    const json answers = peer->exchange(json(1000, requestOf(1, "getState")).dump());
    EXPECT_EQ(1000u, answers.size());
}

TEST_P(ServeMessages, AreReadHoweverTheyAreCut) {
    serve();
    const std::string line = requestOf("cut", "getState").dump() + "\n";
    for (const char each : line) process->write(std::string(1, each));
    EXPECT_TRUE(peer->await("cut").contains("result"));
    process->write(requestOf("a", "getState").dump() + "\n" + requestOf("b", "getState").dump() +
                   "\n" + line);
    EXPECT_TRUE(peer->await("a").contains("result"));
    EXPECT_TRUE(peer->await("b").contains("result"));
    EXPECT_TRUE(peer->await("cut").contains("result"));
}

}  // namespace
