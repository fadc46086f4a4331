// QOR dies and comes back.

#include <gmock/gmock.h>

#include <future>

#include "Models.h"
#include "QorProcesses.h"
#include "Station.h"
#include "Waiting.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr unsigned amply = 3000;

class Restart : public testing::TestWithParam<Transport> {
protected:
    void restartWith(const std::string& model) {
        station.settings.model = station.folder.write("other model.json", model);
        station.restartQor();
        ASSERT_TRUE(station.awaitContact());
    }
    bool readsNow(const std::string& name) {
        return eventually(amply, [&] { return station->getParamData(name, values, 500); });
    }
    /// Writes while nobody is there; how many were told to have succeeded.
    int writesToNobody(unsigned timeoutMs) {
        int succeeded = 0;
        for (int i = 0; i < 5; ++i)
            succeeded += station->setParamData("MaxEngineSpeed", {7000.0 + i}, {}, {}, timeoutMs);
        return succeeded;
    }

    Station station{GetParam()};
    std::vector<double> values;
};

INSTANTIATE_TEST_SUITE_P(Over, Restart, everyTransport(), transportName);

TEST_P(Restart, AfterADeathWithinAReadTheNextQorServesTheNextRead) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":1},
        "action":{"answer":"silent","then":[{"exit":3}]}}]})";
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(station->getParamData("MaxEngineSpeed", values, 500));
    EXPECT_TRUE(eventually(amply, [] { return qor::running().empty(); }));

    station.script.clear();
    station.restartQor();
    ASSERT_TRUE(station.awaitContact());
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_THAT(values, ElementsAre(6500));
}

TEST_P(Restart, WhileQorIsGoneOperationsFailWithinTheirTimeAndTheEcuIsOffline) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station->connect(usualConnect(), QorControlFacade::EcuConnect::Default, nullptr));
    ASSERT_TRUE(eventually(5000, [&] { return station->isEcuOnline(); }));
    qor::killAll();
    EXPECT_TRUE(eventually(5000, [&] { return !station->isEcuOnline(); }));
    bool done = true;
    const unsigned elapsedMs =
        elapsedMsOf([&] { done = station->setParamData("MaxEngineSpeed", {7000}, {}, {}, 300); });
    EXPECT_FALSE(done);
    EXPECT_LE(elapsedMs, 700u);
}

TEST_P(Restart, AQorWithAnotherOrderOfParametersIsAskedForTheRightOnes) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(readsNow("MaxEngineSpeed"));
    EXPECT_THAT(values, ElementsAre(6500));
    restartWith(modelInOppositeOrder());
    ASSERT_TRUE(readsNow("MaxEngineSpeed"));
    EXPECT_THAT(values, ElementsAre(6500));
    EXPECT_TRUE(station->setParamData("MaxEngineSpeed", {7000}, {}, {}, amply));
    EXPECT_TRUE(readsNow("MaxEngineSpeed"));
    EXPECT_THAT(values, ElementsAre(7000));
}

TEST_P(Restart, AWriteToItIsTheRightOneEvenIfNothingWasReadBefore) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station->setParamData("MaxEngineSpeed", {6600}, {}, {}, amply));
    restartWith(modelInOppositeOrder());
    EXPECT_TRUE(eventually(
        amply, [&] { return station->setParamData("MaxEngineSpeed", {7000}, {}, {}, 500); }));
    const auto requests = station.requests();
    EXPECT_THAT(requests, Contains(HasSubstr("GetParamInfo 'MaxEngineSpeed'")));
    EXPECT_TRUE(readsNow("MaxEngineSpeed"));
    EXPECT_THAT(values, ElementsAre(7000));
}

TEST_P(Restart, AWriteThatWasToldToHaveFailedIsNotCarriedOutByTheNextQor) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(readsNow("MaxEngineSpeed"));
    for (const unsigned timeoutMs : {500u, 100u}) {
        qor::killAll();
        EXPECT_EQ(writesToNobody(timeoutMs), 0);
        station.restartQor();
        ASSERT_TRUE(station.awaitContact());
        ASSERT_TRUE(readsNow("MaxEngineSpeed"));
        Sleep(2500);
        ASSERT_TRUE(readsNow("MaxEngineSpeed"));
        EXPECT_THAT(station.requests(), Not(Contains(HasSubstr("op=4"))));
        EXPECT_THAT(values, ElementsAre(6500));
    }
}

TEST_P(Restart, AnEcuIsConnectedAnewThroughTheNextQor) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    qor::killAll();
    station.restartQor();
    ASSERT_TRUE(station.awaitContact());
    EXPECT_TRUE(station.connectEcu());
    EXPECT_TRUE(station->isEcuOnline());
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
}

TEST_P(Restart, AConnectWhoseQorDiesGoesOnUntilItIsCancelled) {
    station.script = R"({"bootstrap":{"result":null,"durationMs":5000},
        "at":[{"since":"connect","afterMs":200,"exit":3}]})";
    ASSERT_TRUE(station.start());
    auto connected = std::async(std::launch::async, [&] { return station.connectEcu(); });
    ASSERT_TRUE(eventually(10000, [] { return qor::running().empty(); }));
    EXPECT_TRUE(station->isConnecting());
    station.monitor.cancelled = true;
    EXPECT_FALSE(connected.get());
    EXPECT_THAT(station.monitor.reports,
                ElementsAre(FakeMonitor::Report("Bootstrap failed - cancelled", 0)));
}

TEST_P(Restart, AQorThatDiedIsNotShutDownButTheFacadeStillEnds) {
    ASSERT_TRUE(station.start());
    qor::killAll();
    // Two farewells that nobody hears: the neutral connect and the shutdown.
    EXPECT_LE(elapsedMsOf([&] { station.close(); }), 9000u);
}

}  // namespace
