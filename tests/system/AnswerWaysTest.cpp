// Over window messages QOR may answer from inside its handler, after it has released the library's
// send, or later. The system decides what it does with a message sent to a thread that is itself
// in a send; the library must get its values in every case.

#include <gmock/gmock.h>

#include <tuple>

#include "Station.h"

using testing::Combine;
using testing::ElementsAre;
using testing::SizeIs;
using testing::Values;

namespace {

constexpr unsigned amply = 3000;

class AnswerWays : public testing::TestWithParam<std::tuple<const char*, const char*>> {
protected:
    AnswerWays() {
        station.settings.answerStyle = std::get<1>(GetParam());
        // A short patience of QOR's own: an answer from inside may wait for the library's send to
        // end, and the library's for QOR's.
        station.settings.simulatorLines =
            std::string("WindowAnswer=") + std::get<0>(GetParam()) + "\nWindowSendMs=100\n";
    }

    Station station{Transport::window};
};

INSTANTIATE_TEST_SUITE_P(Window, AnswerWays,
                         Combine(Values("inside", "released", "later"),
                                 Values("stamped", "separate")),
                         [](const auto& way) {
                             return std::string(std::get<0>(way.param)) + "_" +
                                    std::get<1>(way.param);
                         });

TEST_P(AnswerWays, AnEcuIsConnectedDescribedReadAndWritten) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    wex::ParamDescription description = {};
    ASSERT_TRUE(station->getParamDescription("IgnitionMap", description));
    EXPECT_TRUE(description.threeArrays);
    std::vector<double> values, second, third;
    ASSERT_TRUE(station->getParamData("IgnitionMap", values, second, third, amply));
    EXPECT_THAT(values, SizeIs(48));
    EXPECT_THAT(third, SizeIs(6));
    ASSERT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_THAT(values, ElementsAre(6500));
    ASSERT_TRUE(station->setParamData("MaxEngineSpeed", {7000}, {}, {}, amply));
    ASSERT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_THAT(values, ElementsAre(7000));
    EXPECT_TRUE(station->isEcuOnline());
}

}  // namespace
