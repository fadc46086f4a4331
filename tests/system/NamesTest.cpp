// What a host may pass as a name or a text: nothing of it is ever taken for a format.

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "Station.h"
#include "Waiting.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr unsigned amply = 3000;
const char formats[] = "%s%n%d %p%5000x";

class Names : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    std::vector<double> values;
};

INSTANTIATE_TEST_SUITE_P(Over, Names, everyTransport(), transportName);

TEST_P(Names, PercentSignsStandInTheLinesAsTheyAre) {
    ASSERT_TRUE(station.start());
    const std::size_t traced = station.trace().size();
    EXPECT_FALSE(station->getParamData(formats, values, amply));
    EXPECT_THAT(station.logLines(),
                ElementsAre(std::string("error: FAILED GET-param(") + formats + "), t: # ms"));
    EXPECT_THAT(station.trace(traced),
                Contains(std::string("2\tQorControlFacade::getParamData() failed on param: ") +
                         formats + " , t: # ms"));
}

TEST_P(Names, PercentSignsInEveryOtherTextDoNoHarm) {
    ASSERT_TRUE(station.start());
    ThreadSafeQueue<std::vector<QorControlFacade::ParamValue>> queue(1);
    std::vector<std::vector<double>> group;
    wex::ParamDescription description = {};
    EXPECT_FALSE(station->getParamDescription(formats, description));
    EXPECT_FALSE(station->setParamData(formats, {1}, {}, {}, amply));
    EXPECT_FALSE(station->setDynamicData(formats, formats, amply));
    EXPECT_FALSE(station->startDirectCtrl(formats, amply));
    EXPECT_FALSE(station->stopDirectCtrl(formats, amply));
    EXPECT_FALSE(station->getParamDataAtOnce({formats, formats}, group, amply));
    EXPECT_FALSE(station->setEcuSegment(formats, true, nullptr));
    EXPECT_TRUE(station->startParamRead(&queue, {formats}));
    EXPECT_TRUE(station->stopParamRead(&queue));
    EXPECT_TRUE(station->openModel({1, formats, 0, formats, 0, formats, 0, {}}));
    EXPECT_TRUE(station->pingQor(amply));
    EXPECT_THAT(station.logLines(),
                Contains(std::string("info: SET-segment(") + formats + "): [1]"));
    EXPECT_THAT(station.logLines(), Contains(std::string("info: OPEN-model(") + formats + "): ['" +
                                             formats + "' '" + formats + "']"));
}

TEST_P(Names, EmptyStrangeAndVeryLongNamesFailAndLeaveTheStationWorking) {
    ASSERT_TRUE(station.start());
    const std::string names[] = {"", "two\nlines\r\n", "\xC3\xA4\xFF\x80", std::string(10000, 'n'),
                                 std::string("a\0b", 3)};
    for (const std::string& name : names) {
        EXPECT_FALSE(station->getParamData(name, values, amply));
        EXPECT_FALSE(station->setParamData(name, {1}, {}, {}, amply));
    }
    EXPECT_THAT(values, IsEmpty());
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
}

TEST_P(Names, ManyValuesNotANumberAndInfinityTravelWhole) {
    ASSERT_TRUE(station.start());
    std::vector<double> many(100000, 1.5);
    many[1] = std::numeric_limits<double>::quiet_NaN();
    many[2] = std::numeric_limits<double>::infinity();
    const std::size_t records = station.wire().size();
    EXPECT_FALSE(station->setParamData("MaxEngineSpeed", many, {}, {}, amply));
    const auto requests = requestsIn(station.wire());
    ASSERT_GT(station.wire().size(), records);
    EXPECT_EQ(100000u * 8 + 16, requests.back().payload.size());
    EXPECT_FALSE(station->setParamData("MaxEngineSpeed", {}, {}, {}, amply));
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_THAT(values, ElementsAre(6500));
}

TEST_P(Names, AHostWithoutALogIsServedAllTheSame) {
    station.withLog = false;
    ASSERT_TRUE(station.start());
    EXPECT_TRUE(station.connectEcu());
    EXPECT_FALSE(station->getParamData("NoSuchParameter", values, amply));
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_THAT(station.logLines(), IsEmpty());
}

}  // namespace
