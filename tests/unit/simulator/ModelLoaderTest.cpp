#include "model/ModelLoader.h"

#include "TestSupport.h"

namespace simulator::test {
namespace {

std::string errorOf(const std::string& text) {
    return configErrorOf([&] { modelOf(text); });
}

std::string errorOfParameter(const std::string& fields) {
    return errorOf("{'parameters': [{'name': 'P', " + fields + "}]}");
}

TEST(ModelLoader, TheShapeOfAParameterFollowsFromItsKeys) {
    const EcuModel model = modelOf(smallModel());
    std::vector<ParameterKind> kinds;
    for (const ParameterModel& parameter : model.parameters) kinds.push_back(parameter.kind);
    using K = ParameterKind;
    EXPECT_THAT(kinds, testing::ElementsAre(K::Scalar, K::Array, K::Curve, K::Map, K::Text,
                                            K::Actuator, K::Live));
    EXPECT_TRUE(model.parameters[3].threeArrays());
    EXPECT_FALSE(model.parameters[1].threeArrays());
}

TEST(ModelLoader, ATextIsOneNumberPerCharacter) {
    EXPECT_THAT(modelOf(smallModel()).parameters[4].arrays.first, testing::ElementsAre(97, 98));
}

TEST(ModelLoader, ErrorsNameFileParameterAndReason) {
    const struct {
        const char* fields;
        const char* error;
    } cases[] = {
        {"'value': 'x', 'limits': [0, 1]}, {'name': 'Q'",
         "m.json: parameter \"P\": value: must be a number"},
        {"'value': 1", "m.json: parameter \"P\": \"limits\" is missing"},
        {"'value': 1, 'limits': [2, 0]",
         "m.json: parameter \"P\": limits: the lowest value is above the highest"},
        {"'value': 1, 'limits': [2]", "m.json: parameter \"P\": limits: must be [lowest, highest]"},
        {"'value': 3, 'limits': [0, 2]",
         "m.json: parameter \"P\": the value 3.0 is outside the limits"},
        {"'limits': [0, 2]",
         "m.json: parameter \"P\": needs exactly one of \"value\", \"values\", \"text\", \"live\""},
        {"'value': 1, 'limit': [0, 2]",
         "m.json: parameter \"P\": unknown key \"limit\" - did you mean \"limits\"? Known: name, "
         "description, unit, group, limits, value, values, x, y, text, maxLength, live, actuator, "
         "stamp"},
        {"'values': [1, 2], 'x': [1], 'limits': [0, 2]",
         "m.json: parameter \"P\": values: has 2 numbers; the axes ask for 1"},
        {"'values': [1, 2], 'x': [2, 1], 'limits': [0, 2]",
         "m.json: parameter \"P\": x: the points of an axis must rise"},
        {"'values': [1], 'y': [2], 'limits': [0, 2]", "m.json: parameter \"P\": \"y\" needs \"x\""},
        {"'values': [], 'limits': [0, 2]",
         "m.json: parameter \"P\": values: has 0 numbers; the axes ask for 0"},
        {"'text': 'abc', 'maxLength': 2",
         "m.json: parameter \"P\": maxLength: must be a whole number from 3 to 20000000"},
        {"'live': [{'kind': 'saw'}], 'limits': [0, 2]",
         "m.json: parameter \"P\": live[0]: kind: unknown word \"saw\" - known: sine, ramp, noise, "
         "follow"},
        {"'live': [{'kind': 'sine', 'amplitude': 1, 'periodS': 0}], 'limits': [0, 2]",
         "m.json: parameter \"P\": live[0]: periodS: must be above 0"},
        {"'live': [{'kind': 'follow', 'source': 'P', 'timeConstantS': 1}], 'limits': [0, 2]",
         "m.json: a circle: \"P\" follows \"P\""},
        {"'value': 1, 'limits': [0, 2]}, {'name': 'P', 'value': 1, 'limits': [0, 2]",
         "m.json: parameter \"P\": the name is used twice"},
    };
    for (const auto& c : cases) EXPECT_EQ(errorOfParameter(c.fields), c.error) << c.fields;
}

TEST(ModelLoader, OnlyNumbersCanBeStampsAndNotEveryNumber) {
    EXPECT_EQ(errorOfParameter("'text': 'abc', 'stamp': 1"),
              "m.json: parameter \"P\": only numbers can be a stamp");
    EXPECT_EQ(errorOfParameter("'value': 1, 'limits': [0, 2], 'stamp': 1024"),
              "m.json: parameter \"P\": stamp: must be a whole number from 0 to 1023");
}

TEST(ModelLoader, ErrorsOutsideTheParametersSayWhereTheyAre) {
    const std::string p = "{'parameters': [{'name': 'P', 'value': 1, 'limits': [0, 1]}], ";
    EXPECT_EQ(errorOf("[]"), "m.json: must be an object");
    EXPECT_EQ(errorOf("{}"), "m.json: \"parameters\" is missing");
    EXPECT_EQ(errorOf("{'parameters': []}"), "m.json: parameters: there is no parameter");
    EXPECT_EQ(errorOf(p + "'dtcs': []}"),
              "m.json: unknown key \"dtcs\" - known: parameters, troubleCodes, kwpServices, "
              "canFrames, edit");
    EXPECT_EQ(errorOf(p + "'troubleCodes': [{'code': -1, 'status': 0}]}"),
              "m.json: troubleCodes[0]: code: must be a whole number from 0 to 4294967295");
    EXPECT_EQ(errorOf(p + "'kwpServices': [{'service': 1, 'response': '5'}]}"),
              "m.json: kwpServices[0]: response: has half a byte at its end");
    EXPECT_EQ(errorOf(p + "'canFrames': [{'id': 'xy'}]}"),
              "m.json: canFrames[0]: id: \"xy\" is not a whole number");
    EXPECT_EQ(
        errorOf(p + "'canFrames': [{'id': 1, 'source': 'Q'}]}"),
        "m.json: canFrames[0]: source: there is no parameter \"Q\" - did you mean \"P\"? Known: P");
}

TEST(ModelLoader, OnlyNumbersAreFollowedAndNotInACircle) {
    const auto follower = [](const std::string& name, const std::string& source) {
        return "{'name': '" + name +
               "', 'limits': [0, 1], 'live': [{'kind': 'follow', 'source': '" + source +
               "', 'timeConstantS': 1}]}";
    };
    const auto errorOfAll = [](const std::string& list) {
        return errorOf("{'parameters': [" + list + "]}");
    };
    EXPECT_EQ(errorOfAll(follower("Slow", "slow")),
              "m.json: parameter \"Slow\": there is no parameter \"slow\" - did you mean \"Slow\"? "
              "Known: Slow");
    EXPECT_EQ(errorOfAll(follower("A", "T") + ", {'name': 'T', 'text': 'x'}"),
              "m.json: parameter \"A\": follows \"T\", which is no scalar, actuator or live "
              "parameter");
    EXPECT_EQ(errorOfAll(follower("A", "B") + "," + follower("B", "C") + "," + follower("C", "B")),
              "m.json: a circle: \"B\" follows \"C\" follows \"B\"");
}

TEST(ModelLoader, AMissingFileIsNamed) {
    const std::string error = configErrorOf([] { loadModel("no-such-model.json"); });
    EXPECT_THAT(error, testing::StartsWith("no-such-model.json: cannot be opened"));
}

}  // namespace
}  // namespace simulator::test
