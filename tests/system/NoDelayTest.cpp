// A QOR that acknowledges a request before it sends the data: over TCP each next request waits for
// a confirmation of the system's unless the host wants no delay.

#include <gmock/gmock.h>

#include "qorcontrol/Outcome.h"
#include "QorctlScene.h"
#include "UsualTime.h"

using testing::HasSubstr;
using testing::Not;

namespace {

constexpr unsigned amply = 3000;

class NoDelay : public testing::Test {
protected:
    Station station{Transport::tcp};

    NoDelay() { station.settings.answerStyle = "separate"; }

    double usualMsNow() {
        return usualMs([&] {
            std::vector<QorControlFacade::DtcDescription> codes;
            return station->getDtcByStatus(codes, amply);
        });
    }
};

TEST_F(NoDelay, WithoutItEachRequestWaitsForAConfirmation) {
    ASSERT_TRUE(station.start());
    EXPECT_LT(delayMs, usualMsNow());
}

TEST_F(NoDelay, HoldsForTheConnectionThatStandsAndCanBeTakenBack) {
    ASSERT_TRUE(station.start());
    qorcontrol::setTcpNoDelay(station.facade(), true);
    EXPECT_GT(delayMs, usualMsNow());
    qorcontrol::setTcpNoDelay(station.facade(), false);
    EXPECT_LT(delayMs, usualMsNow());
}

TEST_F(NoDelay, HoldsForTheNextConnection) {
    ASSERT_TRUE(station.start());
    qorcontrol::setTcpNoDelay(station.facade(), true);
    ASSERT_TRUE(station->pingQor(amply));
    station.restartQor();
    ASSERT_TRUE(station.awaitContact());
    EXPECT_GT(delayMs, usualMsNow());
}

TEST(NoDelayOverWindowMessages, ChangesNothing) {
    Station station{Transport::window};
    station.settings.answerStyle = "separate";
    ASSERT_TRUE(station.start());
    qorcontrol::setTcpNoDelay(station.facade(), true);
    EXPECT_TRUE(station->pingQor(amply));
}

class NoDelayOfQorctl : public QorctlScene {
protected:
    /// So many reads that the first ones do not count, and of so many names that none comes out of
    /// the cache.
    static std::vector<std::string> manyReads(const std::vector<std::string>& more = {}) {
        const char* const names[] = {
            "EngineSpeed",    "EngineLoad",      "VehicleSpeed",     "CoolantTemperature",
            "OilPressure",    "OilTemperature",  "AmbientPressure",  "ManifoldPressure",
            "FuelPressure",   "BatteryVoltage",  "ThrottlePosition", "EgrPosition",
            "IgnitionAngle",  "InjectionTime",   "LambdaVoltage",    "KnockLevel",
            "OperatingTime",  "IdleSpeedTarget", "IdleSpeedGainP",   "IdleSpeedGainI",
            "MaxEngineSpeed", "MaxVehicleSpeed", "FuelCutSpeed",     "InjectorFlow",
            "LambdaTarget",   "LambdaGainP",     "LambdaGainI",      "KnockThreshold",
            "KnockRetard",    "CylinderCount"};
        std::vector<std::string> words = {"--refresh", "100"};
        words.insert(words.end(), more.begin(), more.end());
        for (int round = 0; round < 3; ++round)
            words.insert(words.end(), std::begin(names), std::end(names));
        return words;
    }
    NoDelayOfQorctl() { station.settings.answerStyle = "separate"; }
};

INSTANTIATE_TEST_SUITE_P(Over, NoDelayOfQorctl, testing::Values(Transport::tcp), transportName);

TEST_P(NoDelayOfQorctl, IsNamedWhereReadsWaitForConfirmations) {
    const auto ended = run("get", manyReads());
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr("--tcp-no-delay makes that quick"));
}

TEST_P(NoDelayOfQorctl, IsNotNamedWhereItIsGiven) {
    const auto ended = run("get", manyReads({"--tcp-no-delay"}));
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, Not(HasSubstr("makes that quick")));
}

TEST_P(NoDelayOfQorctl, IsNotNamedWhereQorAnswersWithTheData) {
    station.settings.answerStyle = "stamped";
    const auto ended = run("get", manyReads());
    EXPECT_EQ(0, ended.exitCode) << ended.err;
    EXPECT_THAT(ended.err, Not(HasSubstr("makes that quick")));
}

TEST_P(NoDelayOfQorctl, IsFoundOutByTheDoctor) {
    const auto ended = run("doctor", {"--start"});
    EXPECT_THAT(ended.out, HasSubstr("qor.delay"));
    EXPECT_THAT(ended.out, HasSubstr("--tcp-no-delay"));
}

TEST_P(NoDelayOfQorctl, TheDoctorFindsNothingWhereQorAnswersWithTheData) {
    station.settings.answerStyle = "stamped";
    const auto ended = run("doctor", {"--start"});
    EXPECT_THAT(ended.out, HasSubstr("QOR was started"));
    EXPECT_THAT(ended.out, Not(HasSubstr("qor.delay")));
}

}  // namespace
