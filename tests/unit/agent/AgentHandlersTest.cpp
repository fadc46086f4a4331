// Every request kind in one table: what it makes the client send, with how much time for QOR, and
// what its answer carries.

#include <set>

#include "AgentFixture.h"

namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using Facade = QorControlFacade;
using channel::Kind;

constexpr unsigned int callersMs = 777;

struct HandlerRow {
    const char* name;
    channel::Kind kind;
    std::function<std::shared_ptr<channel::CmdData>()> request;
    /// Ids of the commands, and QOR's time for each.
    std::vector<std::pair<int, unsigned int>> sent;
    bool carriesResults;
};

template <class Data, class... Values>
std::function<std::shared_ptr<channel::CmdData>()> made(Values... values) {
    return [=] { return std::make_shared<Data>(values...); };
}

std::vector<HandlerRow> rows() {
    const auto one = made<channel::CmdDataParamData>("one", callersMs);
    const auto three = made<channel::CmdDataParamData>("three", callersMs);
    const std::vector<std::string> names{"one", "three"};
    return {{"openModel",
             Kind{2},
             made<channel::CmdDataModel>(Facade::ModelDescription()),
             {{2, 3000}, {4, 5000}, {1, 90000}},
             false},
            {"connect",
             Kind{3},
             made<channel::CmdDataConnect>(Facade::EcuConnect(), Facade::EcuConnect::Default),
             {{2, 10000}},
             false},
            {"getParamDescription",
             Kind{4},
             made<channel::CmdDataParamInfo>("one", wex::ParamDescription()),
             {{3, 400}},
             true},
            {"getParamData_ofOneArray", Kind{5}, one, {{3, callersMs}, {7, callersMs}}, true},
            {"getParamData_ofThreeArrays", Kind{5}, three, {{3, callersMs}, {12, callersMs}}, true},
            {"setParamData_ofOneArray", Kind{6}, one, {{3, 400}, {7, 500}}, false},
            {"setParamData_ofThreeArrays", Kind{6}, three, {{3, 400}, {12, 500}}, false},
            {"clearDtc", Kind{9}, made<channel::CmdDataDtc>(), {{8, 400}}, false},
            {"setEcuSegment",
             Kind{16},
             made<channel::CmdDataSegment>("WorkingPage", true),
             {{14, 10000}},
             false},
            {"getDtcByStatus",
             Kind{18},
             made<channel::CmdDataDtcData>(callersMs),
             {{9, callersMs}},
             true},
            {"sendKwpCommand",
             Kind{20},
             made<channel::CmdDataKwp>(callersMs, Facade::KwpCommand()),
             {{15, 400}},
             true},
            {"connectCanBus",
             Kind{21},
             made<channel::CmdCanBusConn>(Facade::CanBusConnect(), Facade::EcuConnect::Default),
             {{16, 10000}},
             false},
            {"getCanBusData",
             Kind{22},
             made<channel::CmdCanBusData>(Facade::CanBusData(), callersMs),
             {{17, callersMs}},
             true},
            {"getParamDataAtOnce",
             Kind{23},
             made<channel::CmdParamDataAtOnce>(names, callersMs),
             {{3, callersMs}, {3, callersMs}, {18, callersMs}},
             true},
            {"setDynamicData", Kind{24}, one, {{3, 400}, {7, 500}}, false},
            {"pingQor", Kind{25}, made<channel::CmdDataPing>(callersMs), {{0, callersMs}}, false},
            {"sendCanBusMsg",
             Kind{32},
             made<channel::CmdCanBusSend>(1u, 2u, "x", callersMs),
             {{19, callersMs}},
             false},
            {"startDirectCtrl", Kind{33}, one, {{3, 400}, {7, 500}}, false},
            {"stopDirectCtrl", Kind{34}, one, {{3, 400}, {7, 500}}, false}};
}

void PrintTo(const HandlerRow& row, std::ostream* out) {
    *out << row.name;
}

std::string rowName(const ::testing::TestParamInfo<HandlerRow>& info) {
    return info.param.name;
}

class AgentHandlers : public AgentTest, public ::testing::WithParamInterface<HandlerRow> {
protected:
    AgentHandlers() {
        qor.knows("one", 11, false);
        qor.knows("three", 12, true);
        // A KWP request needs a connect.
        if (GetParam().kind == channel::Kind::sendKwpCommand) {
            succeeds(channel::Kind::connect,
                     std::make_shared<channel::CmdDataConnect>(Facade::EcuConnect(),
                                                               Facade::EcuConnect::Default));
            qor.forgetSent();
        }
    }

    /// QOR answers every request for data with an empty answer.
    void answersAll() {
        answers<CommandGetDTC>();
        answers<CommandExecKwp>();
        answers<CommandCanBusData>();
        echoes<CommandDirectCtrl>();
        echoes<CommandStaticParam>();
        qor.on<CommandReadTogether>([this](const CommandReadTogether& request) {
            CommandReadTogether answer;
            answer.paramIndices = request.paramIndices;
            answer.values.resize(request.paramIndices.size());
            qor.send(answer);
            return true;
        });
    }
    void refuses(int id) {
        refusesAnyOf<CommandPing, CommandStartEdit, CommandKwpConnect, CommandGetParamInfo,
                     CommandDirectCtrl, CommandEcuToolRoutine, CommandGetDTC, CommandStaticParam,
                     CommandEcuSegment, CommandExecKwp, CommandCanBusConnect, CommandCanBusData,
                     CommandReadTogether, CommandCanBusSend>(id);
    }
    std::vector<std::pair<int, unsigned int>> sent() const {
        std::vector<std::pair<int, unsigned int>> all;
        for (const auto& each : qor.sent()) {
            const auto* connect = dynamic_cast<const CommandKwpConnect*>(each.command.get());
            if (connect == nullptr || connect->mode != 2)
                all.emplace_back(each.command->getId(), each.timeoutMs);
        }
        return all;
    }

private:
    template <class... Commands>
    void refusesAnyOf(int id) {
        const auto refuse = [](const auto&) { return false; };
        ((Commands::id == id ? qor.on<Commands>(refuse) : void()), ...);
    }
    template <class Command>
    void answers() {
        qor.on<Command>([this](const Command&) {
            qor.send(Command());
            return true;
        });
    }
    template <class Command>
    void echoes() {
        qor.on<Command>([this](const Command& request) {
            Command answer;
            answer.paramIndex = request.paramIndex;
            qor.send(answer);
            return true;
        });
    }
};

INSTANTIATE_TEST_SUITE_P(Of, AgentHandlers, ::testing::ValuesIn(rows()), rowName);

TEST(AgentHandlerTable, HasARowForEveryOperationButTheStreams) {
    std::set<Kind> streams{Kind::startDtcRead, Kind::stopDtcRead, Kind::stopParamRead};
    std::set<Kind> tested;
    for (const HandlerRow& row : rows()) tested.insert(row.kind);
    for (const auto& row : channel::operations)
        EXPECT_EQ(tested.count(row.kind), streams.count(row.kind) == 0 ? 1u : 0u) << row.name;
}

TEST_P(AgentHandlers, ASuccessHasSentItsCommandsAndAnswersOnceWithItsResults) {
    answersAll();
    const auto request = GetParam().request();
    const auto answer = carryOut(GetParam().kind, request);
    EXPECT_EQ(answer.result, 1u);
    EXPECT_EQ(answer.data != nullptr, GetParam().carriesResults);
    // As long as anybody holds the request's payload, the facade keeps the queue of a caller that
    // gave up.
    EXPECT_NE(answer.data, request);
    EXPECT_THAT(sent(), ElementsAreArray(GetParam().sent));
}

TEST_P(AgentHandlers, WhatQorDoesNotTakeIsAFailureWithoutResults) {
    answersAll();
    refuses(GetParam().sent.back().first);
    const auto answer = carryOut(GetParam().kind, GetParam().request());
    EXPECT_EQ(answer.result, 0u);
    EXPECT_EQ(answer.data, nullptr);
    EXPECT_THAT(sent(), ElementsAreArray(GetParam().sent));
}

TEST_P(AgentHandlers, AMereAcknowledgementIsEnoughForAnActionButNotForResults) {
    const auto answer = carryOut(GetParam().kind, GetParam().request());
    const bool needsAnswer =
        GetParam().carriesResults &&
        GetParam().kind != channel::Kind::getParamDescription;  // always told here
    EXPECT_EQ(answer.result, needsAnswer ? 0u : 1u);
}

TEST_P(AgentHandlers, WithoutAReplyQueueTheCommandsAreSentAllTheSame) {
    answersAll();
    post(GetParam().kind, GetParam().request(), nullptr);
    agent.step();
    EXPECT_THAT(sent(), ElementsAreArray(GetParam().sent));
}

}  // namespace
