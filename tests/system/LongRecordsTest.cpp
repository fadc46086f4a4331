// Values by the million, and more than can travel.

#include <gmock/gmock.h>

#include "Models.h"
#include "Station.h"
#include "Waiting.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr unsigned amply = 30000;
constexpr std::size_t millions = 2200000;  // 17.6 MB on the wire
/// A write of so many has 128 MiB and a few bytes.
constexpr std::size_t tooMany = (128u << 20) / sizeof(double);

std::vector<double> characters(std::size_t count, unsigned from) {
    std::vector<double> values(count);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = static_cast<double>((from + i % 7919) % 256);
    return values;
}

class LongRecords : public testing::TestWithParam<Transport> {
protected:
    /// A model with a text of almost any length, and a QOR that keeps no log of what travels:
    /// writing that down would take longer than a write may.
    bool startWithALongText() {
        auto model = shippedModel();
        model["parameters"].push_back(
            {{"name", "LongText"}, {"text", ""}, {"maxLength", 20000000}});
        station.settings.model = station.folder.write("model.json", model.dump());
        station.settings.recordLog.clear();
        station.settings.answerStyle = "separate";  // a write is not answered with what it wrote
        return station.start();
    }

    /// Writes until QOR has the values. It has half a second for each write, which is too little
    /// on a busy machine: then the write fails, though QOR has got it.
    bool writesAndReadsBack(const std::vector<double>& written) {
        return eventually(amply, [&] {
            station->setParamData("LongText", written, {}, {}, amply);
            return station->getParamData("LongText", values, amply) && values == written;
        });
    }

    Station station{GetParam()};
    std::vector<double> values;
};

using LongRecordsOverTcp = LongRecords;

INSTANTIATE_TEST_SUITE_P(Over, LongRecords, everyTransport(), transportName);
// No window message of more than 2 MiB arrives under Wine.
INSTANTIATE_TEST_SUITE_P(Over, LongRecordsOverTcp, testing::Values(Transport::tcp), transportName);

TEST_P(LongRecordsOverTcp, MillionsOfValuesAreWrittenAndReadBack) {
    ASSERT_TRUE(startWithALongText());
    const auto written = characters(millions, 1);
    ASSERT_TRUE(writesAndReadsBack(written));
    std::vector<std::vector<double>> group;
    ASSERT_TRUE(station->getParamDataAtOnce({"MaxEngineSpeed", "LongText"}, group, amply));
    EXPECT_THAT(group.at(0), ElementsAre(6500));
    EXPECT_TRUE(written == group.at(1));
    EXPECT_THAT(bytesOfFile(station.settings.log), testing::Not(HasSubstr("has gone")))
        << "the connection was given up";
}

TEST_P(LongRecords, AWriteOfMoreThanCanTravelFailsAtOnceWithALineAndHarmsNothing) {
    ASSERT_TRUE(startWithALongText());
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    const std::vector<double> written(tooMany, 1.0);

    bool done = true;
    const unsigned ms =
        elapsedMsOf([&] { done = station->setParamData("LongText", written, {}, {}, amply); });

    EXPECT_FALSE(done);
    EXPECT_LT(ms, amply / 2);
    EXPECT_TRUE(station.traceHolds(
        "Command 7 is not sent: its record would have 134217756 bytes, at most 134217728 can "
        "travel"));
    EXPECT_TRUE(station.traceHolds("QorControlFacade::setParamData() failed on param: LongText"));
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_THAT(values, ElementsAre(6500));
    EXPECT_THAT(bytesOfFile(station.settings.log), testing::Not(HasSubstr("has gone")));
}

}  // namespace
