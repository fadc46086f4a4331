#include "script/Script.h"

#include "TestSupport.h"

namespace simulator::test {
namespace {

RequestFacts facts(CommandId id, std::optional<std::uint32_t> operation = {},
                   const std::string& name = {}, std::optional<std::uint32_t> index = {}) {
    return {id, operation, name, index};
}

std::string errorOf(const std::string& text) {
    return configErrorOf([&] { scriptOf(text); });
}

TEST(Script, ARuleFitsWhenEverythingThatItNamesIsEqual) {
    Script script = scriptOf(R"({'rules': [{
        'match': {'id': 7, 'operation': 4, 'name': 'Map', 'index': 3},
        'action': {'answer': 'refuse'}}]})");
    const auto decide = [&](const RequestFacts& f) { return script.actionFor(f).answer; };
    EXPECT_EQ(decide(facts(CommandId::DirectCtrl, 4, "Map", 3)), AnswerKind::Refuse);
    EXPECT_EQ(decide(facts(CommandId::StaticParam, 4, "Map", 3)), AnswerKind::Normal);
    EXPECT_EQ(decide(facts(CommandId::DirectCtrl, 1, "Map", 3)), AnswerKind::Normal);
    EXPECT_EQ(decide(facts(CommandId::DirectCtrl, 4, "Curve", 3)), AnswerKind::Normal);
    EXPECT_EQ(decide(facts(CommandId::DirectCtrl, 4, "Map", 2)), AnswerKind::Normal);
    EXPECT_EQ(decide(facts(CommandId::DirectCtrl)), AnswerKind::Normal);
}

TEST(Script, NthAndEveryCountTheFitsOfTheirOwnRule) {
    Script script = scriptOf(R"({'rules': [
        {'match': {'id': 0, 'nth': 2}, 'action': {'delayMs': 1}},
        {'match': {'id': 0, 'every': 3}, 'action': {'delayMs': 2}}]})");
    std::vector<std::uint32_t> delays;
    for (int i = 0; i < 6; ++i) {
        script.actionFor(facts(CommandId::GetHex));
        delays.push_back(script.actionFor(facts(CommandId::Ping)).delayMs);
    }
    EXPECT_THAT(delays, testing::ElementsAre(0, 1, 2, 0, 0, 2));
}

TEST(Script, TheFirstRuleThatFitsDecides) {
    Script script = scriptOf(R"({'rules': [
        {'match': {'id': 0}, 'action': {'delayMs': 1}},
        {'match': {}, 'action': {'delayMs': 2}}]})");
    EXPECT_EQ(script.actionFor(facts(CommandId::Ping)).delayMs, 1U);
    EXPECT_EQ(script.actionFor(facts(CommandId::GetHex)).delayMs, 2U);
}

TEST(Script, EveryKeyOfAnActionIsRead) {
    Script script = scriptOf(R"({'rules': [{'match': {}, 'action': {
        'answer': 'fewerVectors', 'delayMs': 1, 'hangMs': 8, 'ackStatus': 0, 'splitAfterBytes': 2, 'gapMs': 3,
        'mergeWithNext': true, 'duplicates': 4, 'duplicateAfterMs': 9, 'afterNext': true,
        'note': 'n', 'close': 'mid', 'rawHexBefore': '0A0b',
        'bootstrap': {'durationMs': 5, 'steps': 6, 'result': null, 'online': false},
        'then': [{'afterMs': 7, 'stall': '*'}]}}]})");
    const Action action = script.actionFor(facts(CommandId::Ping));
    EXPECT_EQ(action.answer, AnswerKind::FewerVectors);
    EXPECT_EQ(action.delayMs, 1U);
    EXPECT_EQ(action.hangMs, 8U);
    EXPECT_EQ(action.ackStatus, 0U);
    EXPECT_EQ(action.splitAfterBytes, 2U);
    EXPECT_EQ(action.gapMs, 3U);
    EXPECT_TRUE(action.mergeWithNext);
    EXPECT_EQ(action.duplicates, 4U);
    EXPECT_EQ(action.duplicateAfterMs, 9U);
    EXPECT_TRUE(action.afterNext);
    EXPECT_EQ(action.note, "n");
    EXPECT_EQ(action.close, CloseWhen::Mid);
    EXPECT_EQ(action.rawBefore, "\x0A\x0B");
    ASSERT_TRUE(action.bootstrap);
    EXPECT_EQ(action.bootstrap->durationMs, 5U);
    EXPECT_EQ(action.bootstrap->steps, 6U);
    EXPECT_EQ(action.bootstrap->result, std::nullopt);
    EXPECT_FALSE(action.bootstrap->online);
    ASSERT_EQ(action.then.size(), 1U);
    EXPECT_EQ(action.then[0].afterMs, 7U);
    EXPECT_TRUE(std::get<StallEffect>(action.then[0].effect).stalled);
}

TEST(Script, ARuleChoosesTheWayOfAnsweringAWindowMessage) {
    const auto chosen = [](const std::string& way) {
        Script script =
            scriptOf("{'rules': [{'match': {}, 'action': {'windowAnswer': '" + way + "'}}]}",
                     Transport::WindowMessages);
        return script.actionFor(facts(CommandId::Ping)).windowAnswer;
    };
    EXPECT_EQ(chosen("inside"), WindowAnswer::Inside);
    EXPECT_EQ(chosen("released"), WindowAnswer::Released);
    EXPECT_EQ(chosen("later"), WindowAnswer::Later);
}

TEST(Script, AMessageHasAnyTagAnyLengthOrNoBytesAtAll) {
    const auto message = [](const std::string& text) {
        const Script script = scriptOf("{'at': [{'since': 'start', 'message': " + text + "}]}",
                                       Transport::WindowMessages);
        return std::get<MessageEffect>(script.scheduledSince(Since::Start).at(0).effect);
    };
    EXPECT_EQ(message("{'hex': '01 02'}").form.tag, 3084U);
    EXPECT_EQ(message("{'tag': 5}").form.tag, 5U);
    EXPECT_EQ(message("{'hex': '01 02', 'length': 3}").bytes, std::string("\1\2\0", 3));
    EXPECT_EQ(message("{'hex': '01 02', 'length': 1}").bytes, "\1");
    EXPECT_EQ(message("{'null': true, 'length': '0xFFFFFFFF'}").form.nullLength, 0xFFFFFFFFU);
    EXPECT_EQ(message("{}").form.nullLength, std::nullopt);
}

TEST(Script, WhatTheTransportCannotDoIsAnError) {
    const auto errorOver = [](Transport transport, const std::string& action) {
        return configErrorOf(
            [&] { scriptOf("{'rules': [{'match': {}, 'action': " + action + "}]}", transport); });
    };
    const std::string place = "s.json: rules[0]: action: ";
    const std::string noConnection = ": needs a connection, and this run is over window messages";
    for (const char* key : {"splitAfterBytes", "gapMs"}) {
        EXPECT_EQ(errorOver(Transport::WindowMessages, "{'" + std::string(key) + "': 1}"),
                  place + key + noConnection);
    }
    EXPECT_EQ(errorOver(Transport::WindowMessages, "{'mergeWithNext': true}"),
              place + "mergeWithNext" + noConnection);
    EXPECT_EQ(errorOver(Transport::WindowMessages, "{'close': 'mid'}"),
              place + "close" + noConnection);
    EXPECT_EQ(errorOver(Transport::WindowMessages, "{'then': [{'close': true}]}"),
              place + "then[0]: close" + noConnection);
    const std::string noWindow = ": needs window messages, and this run is over TCP";
    EXPECT_EQ(errorOver(Transport::Tcp, "{'windowAnswer': 'later'}"),
              place + "windowAnswer" + noWindow);
    EXPECT_EQ(errorOver(Transport::Tcp, "{'then': [{'message': {}}]}"),
              place + "then[0]: message" + noWindow);
    EXPECT_EQ(errorOver(Transport::Tcp, "{'then': [{'flood': {'count': 1}}]}"),
              place + "then[0]: flood" + noWindow);
}

TEST(Script, ABootstrapWithoutDurationTakesThatOfTheSettings) {
    EXPECT_EQ(scriptOf("{'bootstrap': {'result': -2}}").bootstrap()->durationMs, 600U);
    EXPECT_EQ(scriptOf("{'bootstrap': {'result': -2}}").bootstrap()->result, -2);
    EXPECT_EQ(scriptOf("{'bootstrap': {}}").bootstrap()->result, -1);
}

TEST(Script, ScheduledEffectsAreSortedByWhatTheyCountFrom) {
    const Script script = scriptOf(R"({'at': [
        {'since': 'start', 'afterMs': 5, 'online': true},
        {'since': 'client', 'close': true},
        {'since': 'connect', 'exit': 3}]})");
    ASSERT_EQ(script.scheduledSince(Since::Start).size(), 1U);
    EXPECT_EQ(script.scheduledSince(Since::Start)[0].afterMs, 5U);
    const auto connect = script.scheduledSince(Since::Connect);
    EXPECT_EQ(std::get<ExitEffect>(connect[0].effect).code, 3);
}

TEST(Script, ErrorsNameFilePlaceAndReason) {
    const struct {
        const char* text;
        const char* error;
    } cases[] = {
        {"{'rule': []}",
         "s.json: unknown key \"rule\" - did you mean \"rules\"? Known: rules, at, bootstrap"},
        {"{'rules': [{'match': {}}]}", "s.json: rules[0]: \"action\" is missing"},
        {"{'rules': [{'match': {'nth': 0}, 'action': {}}]}",
         "s.json: rules[0]: match: nth: must be a whole number from 1 to 4294967295"},
        {"{'rules': [{'match': {'every': 0}, 'action': {}}]}",
         "s.json: rules[0]: match: every: must be a whole number from 1 to 4294967295"},
        {"{'rules': [{'match': {'id': 70000}, 'action': {}}]}",
         "s.json: rules[0]: match: id: must be a whole number from 0 to 19"},
        {"{'rules': [{'match': {}, 'action': {'close': 'now'}}]}",
         "s.json: rules[0]: action: close: unknown word \"now\" - known: before, mid, after"},
        {"{'rules': [{'match': {}, 'action': {'then': [{}]}}]}",
         "s.json: rules[0]: action: then[0]: needs exactly one effect such as \"push\""},
        {"{'rules': [{'match': {}, 'action': {'then': [{'push': {'value': 1}}]}}]}",
         "s.json: rules[0]: action: then[0]: push: needs either \"name\" or \"index\""},
        {"{'at': [{'close': true}]}", "s.json: at[0]: \"since\" is missing"},
        {"{'at': [{'since': 'noon', 'close': true}]}",
         "s.json: at[0]: since: unknown word \"noon\" - known: start, client, connect"},
        {"{'at': [{'since': 'start', 'rawHex': '0g'}]}",
         "s.json: at[0]: rawHex: must be hexadecimal bytes such as \"5A 80\""},
        {"{'at': [{'since': 'start', 'stop': true}]}",
         "s.json: at[0]: unknown key \"stop\" - known: afterMs, since, push, messageBox, edit, "
         "record, rawHex, message, flood, close, online, stall, resume, exit"},
        {"{'at': [{'since': 'start', 'close': false}]}", "s.json: at[0]: close: can only be true"},
    };
    for (const auto& c : cases) EXPECT_EQ(errorOf(c.text), c.error) << c.text;
}

TEST(Script, ACommandIdThatNoRecordHasIsAnError) {
    const auto error = [](const std::string& id) {
        return configErrorOf(
            [&] { scriptOf("{'rules': [{'match': {'id': " + id + "}, 'action': {}}]}"); });
    };
    EXPECT_EQ("", error("19"));
    EXPECT_NE(std::string::npos, error("20").find("s.json: rules[0]: match: id"));
}

TEST(Script, ANameThatTheModelLacksIsAnErrorWithTheNearestOne) {
    const std::string known = "Scalar, Array, Curve, Map, Text, Actuator, Live";
    const std::string line =
        "there is no parameter \"Line\" - did you mean \"Live\"? Known: " + known;
    EXPECT_EQ(errorOf("{'at': [{'since': 'start', 'stall': 'Line'}]}"),
              "s.json: at[0]: stall: " + line);
    EXPECT_EQ(errorOf("{'at': [{'since': 'start', 'resume': 'Line'}]}"),
              "s.json: at[0]: resume: " + line);
    EXPECT_EQ(errorOf("{'at': [{'since': 'start', 'push': {'name': 'Line', 'value': 1}}]}"),
              "s.json: at[0]: push: name: " + line);
    EXPECT_EQ(errorOf("{'rules': [{'match': {'id': 7, 'name': 'Line'}, 'action': {}}]}"),
              "s.json: rules[0]: match: name: " + line);
    EXPECT_EQ(errorOf("{'rules': [{'match': {'name': 'Line'}, 'action': {}}]}"),
              "s.json: rules[0]: match: name: " + line + ", WorkingPage, ReferencePage");
    EXPECT_EQ(errorOf("{'rules': [{'match': {'id': 14, 'name': 'Map'}, 'action': {}}]}"),
              "s.json: rules[0]: match: name: unknown word \"Map\" - known: WorkingPage, "
              "ReferencePage");
}

TEST(Script, ParametersAndPagesAreNamedByTheRequestsThatCarryThem) {
    for (const char* match : {"{'id': 3, 'name': 'Live'}", "{'name': 'Live'}",
                              "{'id': 14, 'name':"
                              " 'WorkingPage'}",
                              "{'name': 'ReferencePage'}"}) {
        EXPECT_EQ(errorOf("{'rules': [{'match': " + std::string(match) + ", 'action': {}}]}"), "");
    }
}

TEST(Script, EffectsOnAParameterTakeItsIndex) {
    const Script script = scriptOf(R"({'at': [
        {'since': 'start', 'stall': 'Curve'}, {'since': 'start', 'resume': '*'},
        {'since': 'start', 'push': {'name': 'Text', 'value': 1}}]})");
    const auto effects = script.scheduledSince(Since::Start);
    EXPECT_EQ(std::get<StallEffect>(effects.at(0).effect).index, 2U);
    EXPECT_EQ(std::get<StallEffect>(effects.at(1).effect).index, std::nullopt);
    EXPECT_EQ(std::get<PushEffect>(effects.at(2).effect).index, 4);
}

}  // namespace
}  // namespace simulator::test
