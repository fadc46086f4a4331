#include "model/ParameterStore.h"

#include <cmath>

#include "TestSupport.h"

namespace simulator::test {
namespace {

enum Index : std::uint32_t { Scalar, Array, Curve, Map, Text, Actuator, Live };

class ParameterStoreTest : public testing::Test {
protected:
    const EcuModel model_ = modelOf(smallModel());
    ParameterStore store_{model_.parameters};
};

TEST_F(ParameterStoreTest, WrittenValuesAreKept) {
    EXPECT_EQ(store_.writeValues(Array, {3, 4}), std::nullopt);
    EXPECT_THAT(store_.read(Array).first, testing::ElementsAre(3, 4));
}

TEST_F(ParameterStoreTest, ValuesOutsideTheLimitsAreRefusedAndChangeNothing) {
    for (const double value : {-0.1, 10.1, std::nan(""), double{INFINITY}}) {
        EXPECT_NE(store_.writeValues(Array, {1.0, value}), std::nullopt) << value;
    }
    EXPECT_THAT(store_.read(Array).first, testing::ElementsAre(1, 2));
}

TEST_F(ParameterStoreTest, AnArrayOfAnotherSizeIsRefused) {
    EXPECT_NE(store_.writeValues(Array, {1}), std::nullopt);
    EXPECT_NE(store_.writeValues(Scalar, {}), std::nullopt);
    EXPECT_NE(store_.writeArrays(Map, {{1, 2, 3, 4}, {1, 2, 3}, {3, 4}}), std::nullopt);
    EXPECT_NE(store_.writeArrays(Map, {{1, 2, 3, 4}, {1, 2}, {}}), std::nullopt);
    EXPECT_NE(store_.writeArrays(Map, {{1, 2, 3}, {1, 2}, {3, 4}}), std::nullopt);
    EXPECT_THAT(store_.read(Map).second, testing::ElementsAre(1, 2));
}

TEST_F(ParameterStoreTest, AMapKeepsItsValuesAndBothAxes) {
    EXPECT_EQ(store_.writeArrays(Map, {{5, 6, 7, 8}, {9, 10}, {11, 12}}), std::nullopt);
    EXPECT_THAT(store_.read(Map).first, testing::ElementsAre(5, 6, 7, 8));
    EXPECT_THAT(store_.read(Map).second, testing::ElementsAre(9, 10));
    EXPECT_THAT(store_.read(Map).third, testing::ElementsAre(11, 12));
}

TEST_F(ParameterStoreTest, AnAxisPointThatIsNotFiniteIsRefused) {
    EXPECT_NE(store_.writeArrays(Map, {{5, 6, 7, 8}, {9, INFINITY}, {11, 12}}), std::nullopt);
}

TEST_F(ParameterStoreTest, TheReferencePageHoldsTheOriginalsAndCannotBeWritten) {
    store_.writeValues(Scalar, {9});
    store_.select(Page::Reference);
    EXPECT_EQ(store_.firstValue(Scalar), 5);
    EXPECT_NE(store_.writeValues(Scalar, {8}), std::nullopt);
    store_.select(Page::Working);
    EXPECT_EQ(store_.firstValue(Scalar), 9);
}

TEST_F(ParameterStoreTest, AnActuatorIsWrittenUnderDirectControlOnly) {
    EXPECT_NE(store_.writeValues(Actuator, {50}), std::nullopt);
    EXPECT_EQ(store_.startControl(Actuator), std::nullopt);
    EXPECT_EQ(store_.writeValues(Actuator, {50}), std::nullopt);
    EXPECT_EQ(store_.firstValue(Actuator), 50);
    EXPECT_EQ(store_.stopControl(Actuator), std::nullopt);
    EXPECT_EQ(store_.firstValue(Actuator), 1);
    EXPECT_NE(store_.stopControl(Actuator), std::nullopt);
}

TEST_F(ParameterStoreTest, OnlyActuatorsComeUnderDirectControl) {
    EXPECT_NE(store_.startControl(Scalar), std::nullopt);
    EXPECT_NE(store_.startControl(Live), std::nullopt);
}

TEST_F(ParameterStoreTest, AMeasurementFollowsItsActuatorAndCannotBeWritten) {
    EXPECT_EQ(store_.firstValue(Live), 10);
    store_.startControl(Actuator);
    store_.writeValues(Actuator, {50});
    store_.advanceTo(1000);
    EXPECT_NEAR(store_.firstValue(Live), 500 - 490 * std::exp(-1.0), 1e-9);
    store_.releaseActuators();
    store_.advanceTo(60000);
    EXPECT_NEAR(store_.firstValue(Live), 10, 1e-9);
    EXPECT_NE(store_.writeValues(Live, {1}), std::nullopt);
}

TEST_F(ParameterStoreTest, TimeDoesNotRunBackwards) {
    store_.startControl(Actuator);
    store_.writeValues(Actuator, {50});
    store_.advanceTo(1000);
    const double before = store_.firstValue(Live);
    store_.advanceTo(500);
    EXPECT_EQ(store_.firstValue(Live), before);
}

TEST(ParameterStoreStamps, EachReadingTellsItsNumberAndAnotherTime) {
    const EcuModel model = modelOf(
        "{'parameters': [{'name': 'A', 'value': 1, 'limits': [0, 9], 'stamp': 3},"
        " {'name': 'B', 'values': [1, 2], 'x': [1, 2], 'limits': [0, 9], 'stamp': 1023}]}");
    const ParameterStore store(model.parameters);
    const double unit = 4398046511104.0;  // 2^42
    const double first = store.firstValue(0);
    EXPECT_EQ(3.0, std::floor(first / unit));
    const Arrays curve = store.read(1);
    EXPECT_EQ(1023.0, std::floor(curve.first.at(0) / unit));
    EXPECT_EQ(curve.first.at(0), curve.first.at(1));
    EXPECT_THAT(curve.second, testing::ElementsAre(1, 2));
    EXPECT_GE(curve.first.at(0) - 1023 * unit, first - 3 * unit);
}

TEST_F(ParameterStoreTest, ATextTakesAnyLengthUpToItsLongest) {
    EXPECT_EQ(store_.writeText(Text, "xyz"), std::nullopt);
    EXPECT_THAT(store_.read(Text).first, testing::ElementsAre('x', 'y', 'z'));
    EXPECT_EQ(store_.writeText(Text, ""), std::nullopt);
    EXPECT_TRUE(store_.read(Text).first.empty());
    EXPECT_EQ(store_.firstValue(Text), 0);
    EXPECT_NE(store_.writeText(Text, "wxyz"), std::nullopt);
}

TEST_F(ParameterStoreTest, ANumberCanBeWrittenAsText) {
    EXPECT_EQ(store_.writeText(Scalar, "7.5"), std::nullopt);
    EXPECT_EQ(store_.firstValue(Scalar), 7.5);
    for (const char* text : {"", "seven", "7x", "11"}) {
        EXPECT_NE(store_.writeText(Scalar, text), std::nullopt) << text;
    }
    EXPECT_EQ(store_.firstValue(Scalar), 7.5);
}

TEST_F(ParameterStoreTest, AnIndexBeyondTheListIsUnknown) {
    EXPECT_EQ(store_.at(7), nullptr);
    EXPECT_EQ(store_.at(0xFFFFFFFF), nullptr);
    EXPECT_EQ(store_.find("Nope"), nullptr);
}

// A ramp of 10 a second, behind it a lag of 2 s, and behind that one of 0.5 s, named the other way
// round.
const char* chainModel() {
    return R"({'parameters': [
        {'name': 'Last', 'limits': [-1000, 1000], 'live': [
            {'kind': 'follow', 'source': 'Middle', 'gain': 3, 'offset': 1, 'timeConstantS': 0.5}]},
        {'name': 'Middle', 'limits': [-1000, 1000], 'live': [
            {'kind': 'follow', 'source': 'Ramp', 'timeConstantS': 2}]},
        {'name': 'Ramp', 'limits': [0, 1000], 'live': [
            {'kind': 'ramp', 'from': 0, 'to': 1000, 'periodS': 100}]}]})";
}

// Middle = 10 t - 20 + 20 exp(-t/2); Last - 1 = 3 (10 t - 25 + 80/3 exp(-t/2) - 5/3 exp(-2 t)).
TEST(ParameterStoreChain, AMeasurementFollowsAMeasurement) {
    const EcuModel model = modelOf(chainModel());
    ParameterStore store(model.parameters);
    EXPECT_EQ(store.firstValue(0), 1);
    store.advanceTo(3000);
    EXPECT_NEAR(store.firstValue(2), 30, 1e-9);
    EXPECT_NEAR(store.firstValue(1), 10 + 20 * std::exp(-1.5), 1e-6);
    const double last = 5 + 80.0 / 3 * std::exp(-1.5) - 5.0 / 3 * std::exp(-6.0);
    EXPECT_NEAR(store.firstValue(0), 1 + 3 * last, 1e-3);
}

TEST(ParameterStoreChain, ItMakesNoDifferenceHowOftenTimeIsTold) {
    const EcuModel model = modelOf(chainModel());
    ParameterStore often(model.parameters);
    ParameterStore once(model.parameters);
    for (std::uint64_t ms = 0; ms <= 3000; ms += 7) often.advanceTo(ms);
    often.advanceTo(3000);
    once.advanceTo(3000);
    EXPECT_NEAR(often.firstValue(0), once.firstValue(0), 1e-3);
}

}  // namespace
}  // namespace simulator::test
