#include "serve/rpc/Param.h"

#include <gmock/gmock.h>

#include "serve/rpc/Failure.h"

using nlohmann::json;
using qorctl::serve::argumentsOf;
using qorctl::serve::Failure;
using qorctl::serve::Kind;
using qorctl::serve::Param;
using qorctl::serve::Params;
using qorctl::serve::RpcCode;
using qorctl::serve::schemaOf;

namespace {

/// What is wrong with the arguments; empty if nothing is.
std::string whyNot(const Params& params, const json& given) {
    try {
        argumentsOf(params, given);
        return {};
    } catch (const Failure& failure) {
        EXPECT_EQ(RpcCode::invalidParams, failure.code);
        return failure.message;
    }
}

Param one(Kind kind) {
    return {"it", kind, ""};
}

bool fits(Kind kind, const json& value) {
    return whyNot({one(kind)}, {{"it", value}}).empty();
}

TEST(RpcParam, ByNameAndByPositionAreTheSame) {
    const Params params = {one(Kind::text), Param{"ms", Kind::whole, ""}.orElse(9)};
    const json expected = {{"it", "a"}, {"ms", 9}};
    EXPECT_EQ(expected, argumentsOf(params, {{"it", "a"}}));
    EXPECT_EQ(expected, argumentsOf(params, json::array({"a"})));
    EXPECT_EQ((json{{"it", "a"}, {"ms", 5}}), argumentsOf(params, json::array({"a", 5})));
    EXPECT_EQ(json::object(), argumentsOf({}, nullptr));
}

TEST(RpcParam, ThatIsMissingUnknownOrTooManyIsNamed) {
    const Params params = {one(Kind::text), Param{"timeoutMs", Kind::whole, ""}.orElse(9)};
    EXPECT_EQ("it is missing", whyNot(params, nullptr));
    EXPECT_EQ("there is no parameter \"timeoutMS\", perhaps \"timeoutMs\" is meant",
              whyNot(params, {{"it", "a"}, {"timeoutMS", 1}}));
    EXPECT_EQ("there are only 2 parameters", whyNot(params, json::array({"a", 1, 2})));
}

TEST(RpcParam, OfEachKindTakesWhatItIsAndNothingElse) {
    EXPECT_TRUE(fits(Kind::text, ""));
    EXPECT_FALSE(fits(Kind::text, 1));
    EXPECT_TRUE(fits(Kind::bytes, "0A1f 00"));
    EXPECT_FALSE(fits(Kind::bytes, "0A1"));
    EXPECT_TRUE(fits(Kind::whole, 4294967295u));
    EXPECT_TRUE(fits(Kind::whole, 2.0));
    for (const json& wrong : {json(-1), json(4294967296), json(0.5), json("1"), json(1e300)})
        EXPECT_FALSE(fits(Kind::whole, wrong)) << wrong;
    EXPECT_TRUE(fits(Kind::signedWhole, -2147483648LL));
    EXPECT_FALSE(fits(Kind::signedWhole, 2147483648LL));
    EXPECT_TRUE(fits(Kind::flag, false));
    EXPECT_FALSE(fits(Kind::flag, 0));
    EXPECT_TRUE(fits(Kind::number, "-Infinity"));
    EXPECT_FALSE(fits(Kind::number, "many"));
    EXPECT_TRUE(fits(Kind::textMap, {{"a", "b"}}));
    EXPECT_FALSE(fits(Kind::textMap, {{"a", 1}}));
}

TEST(RpcParam, OfAChoiceNamesTheChoices) {
    Param choice = one(Kind::choice);
    choice.choices = {"A", "B"};
    EXPECT_EQ("", whyNot({choice}, {{"it", "B"}}));
    EXPECT_EQ("it must be one of \"A\", \"B\"", whyNot({choice}, {{"it", "C"}}));
}

TEST(RpcParam, WithinListsAndRecordsIsNamedByItsPlace) {
    Param record = one(Kind::record);
    record.fields = {{"canId", Kind::whole, ""}};
    const Params params = {record.listed()};
    EXPECT_EQ("", whyNot(params, {{"it", {{{"canId", 1}}}}}));
    EXPECT_EQ("it[1].canId is missing", whyNot(params, {{"it", {{{"canId", 1}}, json::object()}}}));
    EXPECT_EQ("it must be an array", whyNot(params, {{"it", {{"canId", 1}}}}));
    EXPECT_EQ("it[0][1] must be a text", whyNot({one(Kind::text).listed().listed()},
                                                {{"it", json::array({json::array({"a", 1})})}}));
}

TEST(RpcParam, IsDescribedByWhatItIsCheckedBy) {
    Param record = one(Kind::record);
    record.fields = {{"must", Kind::text, "this"}, Param{"may", Kind::whole, ""}.orElse(3)};
    const json schema = schemaOf(record.listed());
    EXPECT_EQ("array", schema["type"]);
    const json& items = schema["items"];
    EXPECT_EQ(json::array({"must"}), items["required"]);
    EXPECT_EQ("this", items["properties"]["must"]["description"]);
    EXPECT_EQ(3, items["properties"]["may"]["default"]);
    EXPECT_EQ(false, items["additionalProperties"]);
}

}  // namespace
