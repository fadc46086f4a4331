#include "script/ScriptLoader.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "model/ParameterStore.h"
#include "script/EffectLoader.h"

namespace simulator {

namespace {

constexpr auto highestId = static_cast<std::int64_t>(CommandId::CanBusSend);
constexpr std::int64_t maxMs = 86400000;  // a day
constexpr std::int64_t maxBootstrapSteps = 10000;
constexpr std::int64_t maxDuplicates = 1000;

template <class Choice, std::size_t Size>
Choice choiceFrom(const JsonNode& node, const std::pair<const char*, Choice> (&choices)[Size]) {
    const std::string text = node.text();
    Names known;
    for (const auto& [name, choice] : choices) {
        if (text == name) return choice;
        known.emplace_back(name);
    }
    node.failUnknownChoice(known);
}

constexpr std::pair<const char*, AnswerKind> answers[] = {
    {"normal", AnswerKind::Normal},
    {"stamped", AnswerKind::Stamped},
    {"separate", AnswerKind::Separate},
    {"ackOnly", AnswerKind::AckOnly},
    {"silent", AnswerKind::Silent},
    {"refuse", AnswerKind::Refuse},
    {"wrongName", AnswerKind::WrongName},
    {"wrongType", AnswerKind::WrongType},
    {"fewerVectors", AnswerKind::FewerVectors},
    {"another", AnswerKind::Another},
    {"foreignId", AnswerKind::ForeignId}};

constexpr std::pair<const char*, CloseWhen> closes[] = {
    {"before", CloseWhen::Before}, {"mid", CloseWhen::Mid}, {"after", CloseWhen::After}};

constexpr std::pair<const char*, Since> sinces[] = {
    {"start", Since::Start}, {"client", Since::Client}, {"connect", Since::Connect}};

std::optional<std::uint32_t> optionalWord(const JsonNode& node, const char* key,
                                          std::int64_t lowest = 0) {
    if (!node.has(key)) return std::nullopt;
    return static_cast<std::uint32_t>(node.at(key).integer(lowest, 0xFFFFFFFF));
}

BootstrapPlan bootstrapFrom(const JsonNode& node, std::uint32_t connectMs) {
    node.allowOnly({"durationMs", "steps", "result", "online"});
    BootstrapPlan plan;
    plan.durationMs = static_cast<std::uint32_t>(node.integer("durationMs", connectMs, 0, maxMs));
    plan.steps =
        static_cast<std::uint32_t>(node.integer("steps", plan.steps, 0, maxBootstrapSteps));
    plan.online = node.boolean("online", true);
    if (node.has("result")) {
        plan.result.reset();
        const JsonNode result = node.at("result");
        if (!result.isNull()) {
            plan.result =
                static_cast<std::int32_t>(result.integer(std::numeric_limits<std::int32_t>::min(),
                                                         std::numeric_limits<std::int32_t>::max()));
        }
    }
    return plan;
}

/// What a request of this rule can name: a page where it selects one, else a parameter.
Names namesFor(const Match& match, const Names& parameters) {
    Names pages(std::begin(pageNames), std::end(pageNames));
    if (match.id == CommandId::EcuSegment) return pages;
    if (match.id) return parameters;
    Names both = parameters;
    both.insert(both.end(), pages.begin(), pages.end());
    return both;
}

void checkName(const JsonNode& node, const Match& match, const Names& parameters) {
    const Names known = namesFor(match, parameters);
    if (std::find(known.begin(), known.end(), *match.name) != known.end()) return;
    if (match.id != CommandId::EcuSegment) node.failUnknownParameter(*match.name, known);
    node.failUnknownChoice(known);
}

Match matchFrom(const JsonNode& node, const Names& parameters) {
    node.allowOnly({"id", "operation", "name", "index", "nth", "every"});
    Match match;
    if (node.has("id")) match.id = static_cast<CommandId>(node.at("id").integer(0, highestId));
    match.operation = optionalWord(node, "operation");
    if (node.has("name")) {
        match.name = node.at("name").text();
        checkName(node.at("name"), match, parameters);
    }
    match.index = optionalWord(node, "index");
    match.nth = optionalWord(node, "nth", 1);
    match.every = optionalWord(node, "every", 1);
    return match;
}

constexpr std::pair<const char*, WindowAnswer> windowAnswers[] = {
    {"inside", WindowAnswer::Inside},
    {"released", WindowAnswer::Released},
    {"later", WindowAnswer::Later}};

void checkTransport(const JsonNode& node, Transport transport) {
    const auto require = [&](const char* key, Transport needed) {
        if (node.has(key)) requireTransport(node.at(key), needed, transport);
    };
    require("windowAnswer", Transport::WindowMessages);
    for (const char* key : {"splitAfterBytes", "gapMs", "mergeWithNext", "close"}) {
        require(key, Transport::Tcp);
    }
}

Action actionFrom(const JsonNode& node, const ScriptUse& use) {
    node.allowOnly({"answer", "delayMs", "hangMs", "ackStatus", "windowAnswer", "splitAfterBytes",
                    "gapMs", "mergeWithNext", "duplicates", "duplicateAfterMs", "afterNext", "note",
                    "close", "rawHexBefore", "bootstrap", "then"});
    checkTransport(node, use.transport);
    Action action;
    if (node.has("answer")) action.answer = choiceFrom(node.at("answer"), answers);
    action.delayMs = static_cast<std::uint32_t>(node.integer("delayMs", 0, 0, maxMs));
    action.hangMs = static_cast<std::uint32_t>(node.integer("hangMs", 0, 0, maxMs));
    if (node.has("windowAnswer")) {
        action.windowAnswer = choiceFrom(node.at("windowAnswer"), windowAnswers);
    }
    action.ackStatus = optionalWord(node, "ackStatus");
    action.splitAfterBytes = optionalWord(node, "splitAfterBytes", 1);
    action.gapMs = static_cast<std::uint32_t>(node.integer("gapMs", 0, 0, maxMs));
    action.mergeWithNext = node.boolean("mergeWithNext", false);
    action.duplicates = static_cast<std::uint32_t>(node.integer("duplicates", 0, 0, maxDuplicates));
    action.duplicateAfterMs =
        static_cast<std::uint32_t>(node.integer("duplicateAfterMs", 0, 0, maxMs));
    action.afterNext = node.boolean("afterNext", false);
    action.note = node.text("note", "");
    if (node.has("close")) action.close = choiceFrom(node.at("close"), closes);
    if (node.has("rawHexBefore")) action.rawBefore = node.at("rawHexBefore").hexBytes();
    if (node.has("bootstrap"))
        action.bootstrap = bootstrapFrom(node.at("bootstrap"), use.connectMs);
    for (const JsonNode& item : node.items("then")) {
        action.then.push_back(timedEffectFrom(item, use));
    }
    return action;
}

Rule ruleFrom(const JsonNode& node, const ScriptUse& use) {
    node.allowOnly({"match", "action"});
    return {matchFrom(node.at("match"), use.parameters), actionFrom(node.at("action"), use)};
}

ScheduledEffect scheduledFrom(const JsonNode& node, const ScriptUse& use) {
    ScheduledEffect scheduled;
    scheduled.since = choiceFrom(node.at("since"), sinces);
    scheduled.timed = timedEffectFrom(node, use, "since");
    return scheduled;
}

}  // namespace

Script scriptFromJson(const JsonNode& root, const ScriptUse& use) {
    root.allowOnly({"rules", "at", "bootstrap"});
    std::vector<Rule> rules;
    for (const JsonNode& node : root.items("rules")) rules.push_back(ruleFrom(node, use));
    std::vector<ScheduledEffect> scheduled;
    for (const JsonNode& node : root.items("at")) {
        scheduled.push_back(scheduledFrom(node, use));
    }
    std::optional<BootstrapPlan> bootstrap;
    if (root.has("bootstrap")) bootstrap = bootstrapFrom(root.at("bootstrap"), use.connectMs);
    return Script(std::move(rules), std::move(scheduled), bootstrap);
}

Script loadScript(const std::string& path, const ScriptUse& use) {
    const nlohmann::json document = readJsonFile(path);
    return scriptFromJson(JsonNode(document, path), use);
}

}  // namespace simulator
