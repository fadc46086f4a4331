#include "behaviour/Bootstrap.h"

#include "TestSupport.h"

namespace simulator::test {
namespace {

// "-11:50" for every report that is due.
std::vector<std::string> reports(Bootstrap& bootstrap, std::uint64_t nowMs) {
    std::vector<std::string> texts;
    for (const ParamDataPayload& report : bootstrap.poll(nowMs)) {
        texts.push_back(std::to_string(report.index) + ":" +
                        std::to_string(static_cast<int>(report.value)));
    }
    return texts;
}

TEST(Bootstrap, ProgressRisesThenTheResultComesAndTheEcuIsOnline) {
    Bootstrap bootstrap;
    bootstrap.start({100, 2, -1, true}, 1000);
    EXPECT_THAT(reports(bootstrap, 1049), testing::IsEmpty());
    EXPECT_THAT(reports(bootstrap, 1050), testing::ElementsAre("-11:50"));
    EXPECT_FALSE(bootstrap.isOnline());
    EXPECT_EQ(bootstrap.nextMs(), 1100U);
    EXPECT_THAT(reports(bootstrap, 1100), testing::ElementsAre("-11:100", "-12:-1"));
    EXPECT_TRUE(bootstrap.isOnline());
    EXPECT_EQ(bootstrap.nextMs(), std::nullopt);
}

TEST(Bootstrap, AFailureLeavesTheEcuOffline) {
    Bootstrap bootstrap;
    bootstrap.start({0, 0, -2, true}, 0);
    EXPECT_THAT(reports(bootstrap, 0), testing::ElementsAre("-12:-2"));
    EXPECT_FALSE(bootstrap.isOnline());
}

TEST(Bootstrap, WithoutAResultItFallsSilentAfterTheProgress) {
    Bootstrap bootstrap;
    bootstrap.start({10, 1, std::nullopt, true}, 0);
    EXPECT_THAT(reports(bootstrap, 10), testing::ElementsAre("-11:100"));
    EXPECT_EQ(bootstrap.nextMs(), std::nullopt);
    EXPECT_FALSE(bootstrap.isOnline());
}

TEST(Bootstrap, AnEcuMayStayOfflineAfterSuccess) {
    Bootstrap bootstrap;
    bootstrap.start({0, 0, -1, false}, 0);
    EXPECT_THAT(reports(bootstrap, 0), testing::ElementsAre("-12:-1"));
    EXPECT_FALSE(bootstrap.isOnline());
}

TEST(Bootstrap, DisconnectingInTheMiddleEndsTheReports) {
    Bootstrap bootstrap;
    bootstrap.start({100, 10, -1, true}, 0);
    reports(bootstrap, 50);
    bootstrap.disconnect();
    EXPECT_THAT(reports(bootstrap, 1000), testing::IsEmpty());
    EXPECT_FALSE(bootstrap.isOnline());
}

TEST(Bootstrap, ASecondConnectStartsFromTheBeginning) {
    Bootstrap bootstrap;
    bootstrap.start({100, 2, -1, true}, 0);
    reports(bootstrap, 100);
    bootstrap.start({100, 2, -1, true}, 200);
    EXPECT_FALSE(bootstrap.isOnline());
    EXPECT_THAT(reports(bootstrap, 250), testing::ElementsAre("-11:50"));
}

}  // namespace
}  // namespace simulator::test
