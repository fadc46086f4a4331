#include "serve/rpc/Message.h"

#include <gmock/gmock.h>

using nlohmann::json;
using qorctl::serve::Failure;
using qorctl::serve::Message;
using qorctl::serve::messageOf;
using qorctl::serve::notificationOf;
using qorctl::serve::Request;
using qorctl::serve::responseOf;
using qorctl::serve::RpcCode;
using testing::HasSubstr;
using testing::SizeIs;

namespace {

/// The one request of a message that is none.
Request broken(const std::string& text) {
    const Message message = messageOf(text);
    EXPECT_THAT(message.requests, SizeIs(1)) << text;
    EXPECT_FALSE(message.isBatch) << text;
    EXPECT_TRUE(message.requests.at(0).failure.has_value()) << text;
    return message.requests.at(0);
}

TEST(RpcMessage, OfOneRequestHasItsParts) {
    const Message message =
        messageOf(R"({"jsonrpc":"2.0","id":"a","method":"pingQor","params":{"timeoutMs":5}})");
    EXPECT_FALSE(message.isBatch);
    ASSERT_THAT(message.requests, SizeIs(1));
    const Request& request = message.requests[0];
    EXPECT_FALSE(request.failure.has_value());
    EXPECT_EQ("a", request.id);
    EXPECT_FALSE(request.isNotification);
    EXPECT_EQ("pingQor", request.method);
    EXPECT_EQ(5, request.params["timeoutMs"]);
}

TEST(RpcMessage, WithoutAnIdIsANotificationAndWithNullIsNot) {
    EXPECT_TRUE(messageOf(R"({"jsonrpc":"2.0","method":"x"})").requests[0].isNotification);
    EXPECT_FALSE(
        messageOf(R"({"jsonrpc":"2.0","id":null,"method":"x"})").requests[0].isNotification);
}

TEST(RpcMessage, OfABatchKeepsTheOrderAndTellsWhichAreNone) {
    const Message message =
        messageOf(R"([{"jsonrpc":"2.0","id":1,"method":"x"},1,{"jsonrpc":"2.0","id":2}])");
    EXPECT_TRUE(message.isBatch);
    ASSERT_THAT(message.requests, SizeIs(3));
    EXPECT_FALSE(message.requests[0].failure.has_value());
    ASSERT_TRUE(message.requests[1].failure.has_value());
    EXPECT_EQ(RpcCode::invalidRequest, message.requests[1].failure->code);
    ASSERT_TRUE(message.requests[2].failure.has_value());
    EXPECT_EQ(2, message.requests[2].id);  // so the client knows which one it was
}

TEST(RpcMessage, ThatIsNoJsonIsAParseError) {
    for (const char* text : {"", "{", "nonsense", "{\"a\":1}x", "\"\xFF\""})
        EXPECT_EQ(RpcCode::parseError, broken(text).failure->code) << text;
}

TEST(RpcMessage, ThatIsNestedTooDeeplyIsNotParsedToItsEnd) {
    EXPECT_THAT(broken(std::string(1000000, '[')).failure->message, HasSubstr("too deeply"));
    std::string deep;
    for (int i = 0; i < 100; ++i) deep += "{\"a\":";
    EXPECT_EQ(RpcCode::parseError, broken(deep + "1" + std::string(100, '}')).failure->code);
}

// The time for a number grows with the square of its length; texts may have any.
TEST(RpcMessage, WithAnEndlessNumberIsNotParsed) {
    const std::string digits(1001, '7');
    for (const std::string& number : {digits, "-" + digits, "0." + digits, "1e" + digits}) {
        const Request request = broken("[" + number + "]");
        EXPECT_EQ(RpcCode::parseError, request.failure->code);
        EXPECT_THAT(request.failure->message, HasSubstr("1000"));
    }
    const std::string text = "\\\"" + digits;
    const Message message = messageOf(R"({"jsonrpc":"2.0","id":1,"method":")" + text + "\"}");
    EXPECT_FALSE(message.requests.at(0).failure.has_value());
    EXPECT_EQ("\"" + digits, message.requests.at(0).method);
}

TEST(RpcMessage, ThatIsNoRequestSaysWhatIsWrong) {
    const auto why = [](const char* text) { return broken(text).failure->message; };
    EXPECT_THAT(why("1"), HasSubstr("is an object"));
    EXPECT_THAT(why("[]"), HasSubstr("empty"));
    EXPECT_THAT(why(R"({"method":"x"})"), HasSubstr("\"jsonrpc\""));
    EXPECT_THAT(why(R"({"jsonrpc":"1.0","method":"x"})"), HasSubstr("\"jsonrpc\""));
    EXPECT_THAT(why(R"({"jsonrpc":"2.0","method":1})"), HasSubstr("\"method\""));
    EXPECT_THAT(why(R"({"jsonrpc":"2.0","method":"x","params":1})"), HasSubstr("\"params\""));
    EXPECT_THAT(why(R"({"jsonrpc":"2.0","method":"x","id":{}})"), HasSubstr("\"id\""));
}

TEST(RpcMessage, OfTooLongABatchIsRefusedAsAWhole) {
    std::string batch = "[1";
    for (int i = 0; i < 1000; ++i) batch += ",1";
    EXPECT_THAT(broken(batch + "]").failure->message, HasSubstr("more than 1000"));
}

TEST(RpcMessage, OfTheServerIsWhatTheStandardSays) {
    EXPECT_EQ(json::parse(R"({"jsonrpc":"2.0","id":7,"result":{"a":1}})"),
              responseOf(7, {{"a", 1}}));
    EXPECT_EQ(json::parse(R"({"jsonrpc":"2.0","id":null,"error":{"code":-32601,"message":"no"}})"),
              responseOf(nullptr, Failure{RpcCode::methodNotFound, "no"}));
    EXPECT_EQ(
        json::parse(R"({"jsonrpc":"2.0","id":1,"error":{"code":-32000,"message":"n","data":[2]}})"),
        responseOf(1, Failure{RpcCode::failed, "n", {2}}));
    EXPECT_EQ(json::parse(R"({"jsonrpc":"2.0","method":"values","params":{"a":1}})"),
              notificationOf("values", {{"a", 1}}));
}

}  // namespace
