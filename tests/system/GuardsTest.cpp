// What the guards promise: actuators are given back in every way out, and a queue of a stream goes
// when the library has let go of it and not before.

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>

#include "qorcontrol/DirectControl.h"
#include "qorcontrol/Streams.h"
#include "QorProcesses.h"
#include "Station.h"
#include "support/TcpProcessFigures.h"
#include "Waiting.h"

using qorcontrol::DirectControl;
using qorcontrol::TroubleCodeStream;
using qorcontrol::ValueStream;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr unsigned amply = 5000;
/// Of a queue that is missed in the heap when it is gone: a slot takes 12 bytes at least.
constexpr unsigned manySlots = 200000;
constexpr std::size_t bytesOfThem = 2000000;

class Guards : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};

    bool startConnected(unsigned periodMs = 100) {
        return station.start() && station.connectEcu(periodMs);
    }
    /// The operations of direct control that QOR has seen, as "actuator's index operation".
    std::vector<std::string> controls() const {
        std::vector<std::string> found;
        for (const std::string& line : station.requests())
            if (line.find("DirectCtrl ") == 0 &&
                (line.find("op=2") != std::string::npos || line.find("op=3") != std::string::npos))
                found.push_back(line.substr(0, line.find("op=") + 4));
        return found;
    }
    bool flows(ValueStream& stream) const {
        ValueStream::Values values;
        return eventually(8000, [&] { return stream.pop(values, 200); });
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Guards, everyTransport(), transportName);

TEST_P(Guards, ActuatorsAreGivenBackInTheReverseOrder) {
    ASSERT_TRUE(startConnected());
    {
        const DirectControl throttle(station.facade(), "ThrottleActuator", amply);
        const DirectControl fan(station.facade(), "CoolingFan", amply);
        EXPECT_TRUE(throttle.isTaken());
        EXPECT_TRUE(throttle.set(40));
        EXPECT_TRUE(fan.isTaken());
        ASSERT_EQ(2u, controls().size());
    }
    const std::vector<std::string> all = controls();
    ASSERT_EQ(4u, all.size());
    EXPECT_EQ(all[0].substr(0, all[0].size() - 1), all[3].substr(0, all[3].size() - 1));
    EXPECT_EQ(all[1].substr(0, all[1].size() - 1), all[2].substr(0, all[2].size() - 1));
    EXPECT_THAT(all[2], HasSubstr("op=3"));
    EXPECT_THAT(station.logLines(), Not(Contains(HasSubstr("give back"))));
}

TEST_P(Guards, AnActuatorIsGivenBackWhenAnExceptionEndsItsBlock) {
    ASSERT_TRUE(startConnected());
    const auto fails = [&] {
        const DirectControl throttle(station.facade(), "ThrottleActuator", amply);
        throw std::runtime_error("the part does not fit");
    };
    EXPECT_THROW(fails(), std::runtime_error);
    ASSERT_EQ(2u, controls().size());
    EXPECT_THAT(controls().back(), HasSubstr("op=3"));
}

TEST_P(Guards, AnActuatorIsGivenBackOnce) {
    ASSERT_TRUE(startConnected());
    {
        DirectControl throttle(station.facade(), "ThrottleActuator", amply);
        EXPECT_TRUE(throttle.giveBack());
        EXPECT_FALSE(throttle.isTaken());
        EXPECT_FALSE(throttle.set(40));
        EXPECT_TRUE(throttle.giveBack());
    }
    EXPECT_EQ(2u, controls().size());
}

TEST_P(Guards, WhatWasNeverTakenIsNoFailureToGiveBack) {
    ASSERT_TRUE(startConnected());
    {
        const DirectControl speed(station.facade(), "EngineSpeed", amply, &station.log);
        EXPECT_FALSE(speed.isTaken());
        EXPECT_FALSE(speed.set(3000));
    }
    EXPECT_THAT(station.logLines(), Not(Contains(HasSubstr("FAILED to give back"))));
    EXPECT_THAT(controls(), ElementsAre(HasSubstr("op=2")));
}

// QOR refuses it to the second: whose end must not take it from the first.
TEST_P(Guards, ARefusedOneLeavesTheActuatorToWhoHasIt) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":2,"nth":2},
                                   "action":{"answer":"refuse"}}]})";
    ASSERT_TRUE(startConnected());
    DirectControl first(station.facade(), "ThrottleActuator", amply);
    ASSERT_TRUE(first.isTaken());
    {
        const DirectControl second(station.facade(), "ThrottleActuator", amply);
        EXPECT_FALSE(second.isTaken());
    }
    EXPECT_TRUE(first.set(40));
}

TEST_P(Guards, AStreamThatTheAgentNeverGotHasNotBegun) {
    ASSERT_TRUE(startConnected());
    station->shutdown();
    {
        const TroubleCodeStream codes(station.facade(), 1000, 100, 4, &station.log);
        EXPECT_FALSE(codes.isBegun());
        EXPECT_EQ(nullptr, codes.queue());
    }
    EXPECT_THAT(station.logLines(), Not(Contains(HasSubstr("FAILED to end"))));
}

// QOR takes it late, when its caller has long given up: a guard that asked only for what it knows
// to have would leave the actuator where it is.
TEST_P(Guards, AnActuatorThatQorTakesTooLateIsGivenBackToo) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":2},"action":{"hangMs":1500}}]})";
    ASSERT_TRUE(startConnected());
    {
        const DirectControl throttle(station.facade(), "ThrottleActuator", 100);
        EXPECT_FALSE(throttle.isTaken());
    }
    EXPECT_TRUE(eventually(8000, [&] {
        const std::vector<std::string> all = controls();
        return all.size() >= 2 && all.back().find("op=3") != std::string::npos;
    }));
}

TEST_P(Guards, WhatQorMayHaveTakenAndCannotBeGivenBackIsTold) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":2},"action":)" +
                     silence(GetParam(), 1000) + "}]}";
    ASSERT_TRUE(startConnected());
    {
        const DirectControl throttle(station.facade(), "ThrottleActuator", 100, &station.log);
        EXPECT_FALSE(throttle.isTaken());
        qor::killAll();
    }
    EXPECT_THAT(station.logLines(), Contains(HasSubstr("FAILED to give back ThrottleActuator")));
}

TEST_P(Guards, WhatQorGivesBackLateIsGivenBack) {
    station.script = R"({"rules":[
        {"match":{"id":7,"operation":3,"nth":1},"action":{"hangMs":800}},
        {"match":{"id":7,"operation":3,"nth":2},"action":{"answer":"refuse"}}]})";
    ASSERT_TRUE(startConnected());
    {
        const DirectControl throttle(station.facade(), "ThrottleActuator", 300, &station.log);
        EXPECT_TRUE(throttle.isTaken());
    }
    EXPECT_EQ(3u, controls().size());
    EXPECT_THAT(station.logLines(), Not(Contains(HasSubstr("FAILED to give back"))));
}

TEST_P(Guards, WhatCannotBeGivenBackIsTold) {
    ASSERT_TRUE(startConnected());
    {
        const DirectControl throttle(station.facade(), "ThrottleActuator", 300, &station.log);
        ASSERT_TRUE(throttle.isTaken());
        qor::killAll();
    }
    EXPECT_THAT(station.logLines(), Contains("error: FAILED to give back ThrottleActuator: it may "
                                             "still be under direct control"));
}

TEST_P(Guards, AStreamEndsWithItsBlock) {
    ASSERT_TRUE(startConnected());
    {
        ValueStream stream(station.facade(), {"EngineSpeed"}, 1, &station.log);
        EXPECT_TRUE(flows(stream));
    }
    EXPECT_THAT(station.logLines(), Not(Contains(HasSubstr("FAILED to end"))));
    EXPECT_TRUE(station.traceHolds("QorControlFacade::paramStopAllRead()"));
}

TEST_P(Guards, AfterItsEndAStreamHasNoQueue) {
    ASSERT_TRUE(startConnected());
    ValueStream stream(station.facade(), {"EngineSpeed"}, manySlots);
    ASSERT_TRUE(flows(stream));
    ASSERT_NE(nullptr, stream.queue());
    const std::size_t bytes = tcp::heapBytes();
    EXPECT_TRUE(stream.end(amply));
    EXPECT_LT(tcp::heapBytes() + bytesOfThem, bytes);
    EXPECT_EQ(nullptr, stream.queue());
    ValueStream::Values values;
    EXPECT_FALSE(stream.pop(values, 60000));
    EXPECT_TRUE(stream.end(0));
}

TEST_P(Guards, TroubleCodesComeUntilTheEnd) {
    ASSERT_TRUE(startConnected());
    TroubleCodeStream stream(station.facade(), 1000, 100, 4, &station.log);
    TroubleCodeStream::Codes codes;
    ASSERT_TRUE(eventually(8000, [&] { return stream.pop(codes, 200) && codes.size() == 5; }));
    EXPECT_TRUE(stream.end(amply));
    EXPECT_EQ(nullptr, stream.queue());
}

TEST_P(Guards, AQueueThatMayStillBeFilledIsKeptAndTold) {
    ASSERT_TRUE(startConnected());
    {
        ValueStream values(station.facade(), {"EngineSpeed"}, 1, &station.log);
        TroubleCodeStream codes(station.facade(), 200, 100, 4, &station.log);
        ASSERT_TRUE(flows(values));
        qor::killAll();
        EXPECT_FALSE(values.end(200));
        EXPECT_NE(nullptr, values.queue());
    }
    const std::string line =
        "error: FAILED to end a stream: its queue is kept until the process ends";
    std::vector<std::string> told;
    for (const std::string& each : station.logLines())
        if (each == line) told.push_back(each);
    EXPECT_THAT(told, ElementsAre(line, line));
}

// The agent is in the middle of a request and fills the queue afterwards.
TEST_P(Guards, AnAgentThatIsBusyStillHasTheQueue) {
    station.script = R"({"rules":[{"match":{"id":16},"action":{"hangMs":6000}}]})";
    ASSERT_TRUE(startConnected());
    std::size_t bytes = 0;
    {
        ValueStream stream(station.facade(), {"EngineSpeed"}, manySlots, &station.log);
        ASSERT_TRUE(flows(stream));
        bytes = tcp::heapBytes();
        ASSERT_TRUE(station->connectCanBus({500000, true, false}, {}));
        EXPECT_FALSE(stream.end(100));
    }
    EXPECT_GT(tcp::heapBytes() + bytesOfThem, bytes);
    EXPECT_TRUE(station->pingQor(15000));
}

TEST_P(Guards, AQuietEndTellsNothing) {
    ASSERT_TRUE(startConnected());
    ValueStream stream(station.facade(), {"EngineSpeed"}, 1, &station.log);
    const DirectControl fan(station.facade(), "CoolingFan", amply, &station.log);
    EXPECT_TRUE(stream.end(amply));
    EXPECT_THAT(station.logLines(), Not(Contains(HasSubstr("error"))));
}

}  // namespace
