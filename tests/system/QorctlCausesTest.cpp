// What the command-line host tells of a failed step: the library's cause, and none where no call of
// the library is to blame.

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "QorctlScene.h"

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

class QorctlCauses : public QorctlScene {
protected:
    void withRule(const std::string& match, const std::string& action) {
        station.script = R"({"rules":[{"match":)" + match + R"(,"action":)" + action + "}]}";
    }
    /// The steps of a conversation.
    json steps(const std::string& command, std::vector<std::string> more) {
        more.push_back("--json");
        return json::parse(run(command, more).out).at("steps");
    }
    /// The operations of a batch that goes on behind what fails.
    json operations(const std::string& lines, std::vector<std::string> more = {}) {
        more.insert(more.end(), {"--keep-going", "--json"});
        const auto ended = run("batch", more, lines);
        EXPECT_EQ(1, ended.exitCode) << ended.err;
        const json object = json::parse(ended.out);
        expectTheSameOfTheSteps(object);
        return object.at("operations");
    }
    static void expectTheSameOfTheSteps(const json& object) {
        for (const json& operation : object.at("operations")) {
            for (const json& step : object.at("steps")) {
                if (step.at("step") != operation.at("line")) continue;
                EXPECT_EQ(operation.at("cause"), step.at("cause")) << step;
            }
        }
    }
    /// Of a step or an operation that has failed for that cause; `code` as in QorControl.h.
    static void expectCause(const json& row, const char* name, int code) {
        EXPECT_EQ(false, row.at("ok")) << row;
        const json& cause = row.at("cause");
        ASSERT_TRUE(cause.is_object()) << row;
        EXPECT_EQ(name, cause.at("name"));
        EXPECT_EQ(code, cause.at("code"));
        EXPECT_THAT(cause.at("sentence").get<std::string>(), EndsWith("."));
        EXPECT_THAT(cause.at("check").get<std::string>(), Not(IsEmpty()));
        EXPECT_EQ(false, row.at("mayBelongToEarlier"));
    }
    static void expectNoCause(const json& row) {
        EXPECT_EQ(false, row.at("ok")) << row;
        EXPECT_TRUE(row.at("cause").is_null()) << row;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, QorctlCauses, everyTransport(), transportName);

TEST_P(QorctlCauses, NoneOfWhatWorks) {
    const json done = steps("get", {"MaxVehicleSpeed"});

    for (const json& step : done) {
        EXPECT_EQ(true, step.at("ok")) << step;
        EXPECT_TRUE(step.at("cause").is_null()) << step;
        EXPECT_EQ(false, step.at("mayBelongToEarlier")) << step;
    }
}

TEST_P(QorctlCauses, TheAgentHasEndedForLackOfSettings) {
    const auto ended =
        runQorctl({"ping", station.settingsPath, "--trace", station.tracePath(), "--json"});

    const json step = json::parse(ended.out).at("steps").at(0);
    expectCause(step, "agentEnded", 1);
    EXPECT_THAT(step.at("cause").at("sentence").get<std::string>(),
                HasSubstr("Specified settings file"));
}

TEST_P(QorctlCauses, ThereIsNoConnectionOnceQorHasEnded) {
    // Over window messages QOR ends inside the message.
    withRule(R"({"id":8})", R"({"answer":"silent","then":[{"afterMs":0,"exit":3}]})");

    const json done = operations("clear-dtc\nping\n", {"--timeout", "2000"});

    expectCause(done.at(0), "noConnection", 4);
    EXPECT_THAT(done.at(0).at("cause").at("sentence").get<std::string>(),
                EndsWith("it was lost while the request was under way."));
    expectCause(done.at(1), "noConnection", 4);
}

TEST_P(QorctlCauses, QorIsSilent) {
    withRule(R"({"id":8})", silence(GetParam(), 1500));

    expectCause(steps("clear-dtc", {"--timeout", "2000"}).at(2), "qorSilent", 5);
}

TEST_P(QorctlCauses, QorRefuses) {
    expectCause(steps("set", {"MaxVehicleSpeed", "1000"}).at(2), "refused", 7);
}

TEST_P(QorctlCauses, TheNameIsUnknown) {
    expectCause(steps("get", {"MaxVehicleSpeed", "Nobody"}).at(2), "unknownName", 8);
}

/// The times in it do not count.
std::string withoutTimes(const std::string& text) {
    return std::regex_replace(text, std::regex(" +\\d+ ms"), " # ms");
}

TEST_P(QorctlCauses, ArePrintedAsTheReadmeShows) {
    std::string shown;
    for (const std::string& line : linesOfFile(README))
        if (std::regex_match(line, std::regex("    (FAILED  |        (cause|check): ).*")))
            shown += line.substr(4) + "\n";
    ASSERT_THAT(shown, HasSubstr("FAILED  get"));

    EXPECT_THAT(withoutTimes(run("get", {"Nobody"}).err), HasSubstr(withoutTimes(shown)));
}

TEST_P(QorctlCauses, KwpComesBeforeTheConnect) {
    expectCause(steps("kwp", {"0x3E", "--no-connect"}).at(1), "kwpBeforeConnect", 9);
}

TEST_P(QorctlCauses, QorReportsThatTheConnectFailed) {
    station.script = R"({"bootstrap":{"result":-2,"durationMs":50}})";

    const auto ended = run("connect", {"--json"});

    expectCause(json::parse(ended.out).at("steps").at(1), "connectReported", 11);
    EXPECT_THAT(ended.err, HasSubstr("        cause: connectReported: QOR reported that the "
                                     "connect failed"));
}

TEST_P(QorctlCauses, ParametersThatFailForDifferentCausesAreToldWithThem) {
    withRule(R"({"id":7,"operation":1})", R"({"answer":"ackOnly"})");

    const json step = steps("get", {"Nobody", "MaxVehicleSpeed", "--timeout", "300"}).at(2);

    expectCause(step, "unknownName", 8);
    EXPECT_EQ("not read: Nobody (unknownName), MaxVehicleSpeed (noData)", step.at("text"));
}

TEST_P(QorctlCauses, WhatTheEcuRefusesHasNoneAlsoBehindAFailureOfTheLibrary) {
    const json done = operations("get Nobody\nkwp 0x27 02 00 0A\n");

    expectCause(done.at(0), "unknownName", 8);
    expectNoCause(done.at(1));
    EXPECT_EQ(1, done.at(1).at("result").at("failed"));
}

TEST_P(QorctlCauses, WhatNeedsNoCallHasNoneAlsoBehindAFailureOfTheLibrary) {
    station.writeSettings();
    station.startQorByHand();
    station.settings.executable.clear();

    const json done = operations("get Nobody\npath\n");

    expectCause(done.at(0), "unknownName", 8);
    expectNoCause(done.at(1));
}

TEST_P(QorctlCauses, AnAnswerThatMayBelongToAnEarlierRequestIsAWarning) {
    // QOR takes it at once and answers when its time is over: channel 1, service 0x95, no data.
    withRule(R"({"id":15,"operation":85})",
             R"({"answer":"ackOnly","then":[{"afterMs":1600,"record":{"id":15,)"
             R"("payloadHex":"0100000095000000000000000000000000000000"}}]})");
    const std::string lines = "kwp 0x55\nkwp 0x55\n";

    const auto ended = run("batch", {"--timeout", "600", "--keep-going", "--json"}, lines);
    const json done = json::parse(ended.out).at("operations");

    expectCause(done.at(0), "noData", 6);
    EXPECT_EQ(true, done.at(1).at("ok"));
    EXPECT_TRUE(done.at(1).at("cause").is_null());
    EXPECT_EQ(true, done.at(1).at("mayBelongToEarlier"));
    EXPECT_THAT(ended.err, HasSubstr("0x55\n        warning: an answer may belong to an earlier "
                                     "request"));
}

}  // namespace
