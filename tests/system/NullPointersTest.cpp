// A host that has nothing to pass: no log, no monitor, no queue.

#include <gmock/gmock.h>

#include "Models.h"
#include "OperationTable.h"
#include "Station.h"
#include "Waiting.h"

using testing::IsEmpty;

namespace {

constexpr unsigned amply = 3000;

class NullPointers : public testing::TestWithParam<Transport> {
protected:
    NullPointers() {
        station.withLog = false;
        station.settings.model = station.folder.write("model.json", modelExporting(-1, -1));
    }
    bool connectWithoutMonitor() {
        return station->connect(usualConnect(), QorControlFacade::EcuConnect::Default, nullptr) &&
               eventually(10000, [this] { return station->isEcuOnline(); });
    }

    Station station{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Over, NullPointers, everyTransport(), transportName);

TEST_P(NullPointers, EveryOperationDoesItsWorkWithoutALogOrAMonitor) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(connectWithoutMonitor());
    for (const OperationRow& row : operationTable()) {
        SCOPED_TRACE(row.name);
        std::string results;
        if (row.prepare) row.prepare(station.facade());
        EXPECT_TRUE(row.call(station.facade(), amply, results));
        EXPECT_EQ(row.results, results);
    }
    EXPECT_TRUE(station->pingQor(amply));
    EXPECT_THAT(station.logLines(), IsEmpty());
}

TEST_P(NullPointers, EveryOperationFailsWithoutALogAsWell) {
    std::vector<Rule> rules;
    for (const OperationRow& row : operationTable())
        rules.push_back({row.decisiveRequest, R"({"answer":"refuse"})"});
    station.script = scriptOf(rules);
    ASSERT_TRUE(station.start());
    for (const OperationRow& row : operationTable()) {
        SCOPED_TRACE(row.name);
        std::string results;
        if (row.prepare) row.prepare(station.facade());
        EXPECT_EQ(row.returnsAtOnce, row.call(station.facade(), amply, results));
    }
    EXPECT_TRUE(station->pingQor(amply));
}

TEST_P(NullPointers, ANullQueueStreamsNothingAndDoesNoHarm) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(connectWithoutMonitor());
    EXPECT_TRUE(station->startParamRead(nullptr, {"EngineSpeed"}));
    EXPECT_TRUE(station->stopParamRead(nullptr));
    EXPECT_TRUE(station->startDtcRead(nullptr, 100, 10));
    Sleep(100);
    EXPECT_TRUE(station->stopDtcRead());
    EXPECT_TRUE(station->pingQor(amply));
    for (const std::string& request : station.requests())
        EXPECT_NE(0u, request.find("SetParamList") * request.find("GetDtc")) << request;
}

}  // namespace
