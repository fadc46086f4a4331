#include "script/EffectLoader.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace simulator {

namespace {

constexpr std::int64_t maxMs = 86400000;  // a day
constexpr std::int64_t maxExportBytes = 100000000;
constexpr std::int64_t maxFloodMessages = 1000000;
constexpr std::int64_t maxFloodMessageBytes = 65536;
constexpr std::int64_t maxMessageBytes = std::int64_t{64} * 1024 * 1024;

/// The node is the name of a parameter.
std::uint32_t indexFrom(const JsonNode& node, const Names& parameters) {
    const auto found = std::find(parameters.begin(), parameters.end(), node.text());
    if (found == parameters.end()) node.failUnknownParameter(node.text(), parameters);
    return static_cast<std::uint32_t>(found - parameters.begin());
}

Effect pushFrom(const JsonNode& node, const Names& parameters) {
    node.allowOnly({"name", "index", "value"});
    if (node.has("name") == node.has("index")) node.fail("needs either \"name\" or \"index\"");
    PushEffect push;
    if (node.has("name")) {
        push.index = static_cast<std::int32_t>(indexFrom(node.at("name"), parameters));
    } else {
        push.index = static_cast<std::int32_t>(node.at("index").integer(
            std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
    }
    push.value = node.at("value").number();
    return push;
}

Effect messageBoxFrom(const JsonNode& node, const Names& /*parameters*/) {
    node.allowOnly({"caption", "text", "type"});
    MessageBoxPayload box;
    box.caption = node.text("caption", "");
    box.text = node.text("text", "");
    box.type = static_cast<std::uint32_t>(node.integer("type", 0, 0, 0xFFFFFFFF));
    return MessageBoxEffect{box};
}

Effect editFrom(const JsonNode& node, const Names& /*parameters*/) {
    node.allowOnly({"stage", "path", "info", "files", "addFiles", "exportBytes"});
    EditEffect effect;
    effect.edit.stage = node.at("stage").word();
    effect.edit.path = node.text("path", "");
    if (node.has("info")) {
        for (const auto& [key, value] : node.at("info").members()) {
            effect.edit.info[key] = value.text();
        }
    }
    for (const JsonNode& item : node.items("files")) effect.edit.files.push_back(item.text());
    for (const JsonNode& item : node.items("addFiles")) effect.edit.addFiles.push_back(item.text());
    if (node.has("exportBytes")) {
        effect.exportBytes =
            static_cast<std::uint32_t>(node.at("exportBytes").integer(0, maxExportBytes));
    }
    return effect;
}

Effect recordFrom(const JsonNode& node, const Names& /*parameters*/) {
    node.allowOnly({"id", "payloadHex", "reply", "requestId"});
    RecordEffect effect;
    effect.id = static_cast<CommandId>(node.at("id").integer(0, 0xFFFF));
    effect.isReply = node.boolean("reply", false);
    if (node.has("requestId")) effect.requestId = node.at("requestId").word();
    if (node.has("payloadHex")) effect.payload = node.at("payloadHex").hexBytes();
    return effect;
}

/// A length with bytes fills up with zeros or cuts; without bytes it is only announced.
Effect messageFrom(const JsonNode& node, const Names& /*parameters*/) {
    node.allowOnly({"tag", "hex", "length", "null"});
    MessageEffect effect;
    if (node.has("tag")) effect.form.tag = node.at("tag").word();
    if (node.boolean("null", false)) {
        if (node.has("hex")) node.fail("with \"null\" there are no bytes");
        effect.form.nullLength =
            static_cast<std::uint32_t>(node.integer("length", 0, 0, 0xFFFFFFFF));
        return effect;
    }
    if (node.has("hex")) effect.bytes = node.at("hex").hexBytes();
    if (node.has("length")) {
        effect.bytes.resize(
            static_cast<std::size_t>(node.at("length").integer(0, maxMessageBytes)));
    }
    return effect;
}

Effect floodFrom(const JsonNode& node, const Names& /*parameters*/) {
    node.allowOnly({"count", "seed", "maxBytes"});
    FloodEffect effect;
    effect.count = static_cast<std::uint32_t>(node.at("count").integer(1, maxFloodMessages));
    effect.seed = static_cast<std::uint32_t>(node.integer("seed", 1, 0, 0xFFFFFFFF));
    effect.maxBytes =
        static_cast<std::uint32_t>(node.integer("maxBytes", 64, 0, maxFloodMessageBytes));
    return effect;
}

Effect closeFrom(const JsonNode& node, const Names& /*parameters*/) {
    if (!node.boolean()) node.fail("can only be true");
    return CloseEffect{};
}

/// "*" stands for every subscribed parameter.
Effect stallFrom(const JsonNode& node, const Names& parameters, bool stalled) {
    if (node.text() == "*") return StallEffect{std::nullopt, stalled};
    return StallEffect{indexFrom(node, parameters), stalled};
}

Effect rawFrom(const JsonNode& node, const Names& /*parameters*/) {
    return RawEffect{node.hexBytes()};
}

Effect onlineFrom(const JsonNode& node, const Names& /*parameters*/) {
    return OnlineEffect{node.boolean()};
}

Effect stallOf(const JsonNode& node, const Names& parameters) {
    return stallFrom(node, parameters, true);
}

Effect resumeOf(const JsonNode& node, const Names& parameters) {
    return stallFrom(node, parameters, false);
}

Effect exitFrom(const JsonNode& node, const Names& /*parameters*/) {
    return ExitEffect{static_cast<int>(node.integer(0, 255))};
}

struct EffectKind {
    const char* key;
    Effect (*load)(const JsonNode& node, const Names& parameters);
    std::optional<Transport> only = {};
};

constexpr EffectKind kinds[] = {
    {"push", pushFrom},
    {"messageBox", messageBoxFrom},
    {"edit", editFrom},
    {"record", recordFrom},
    {"rawHex", rawFrom},
    {"message", messageFrom, Transport::WindowMessages},
    {"flood", floodFrom, Transport::WindowMessages},
    {"close", closeFrom, Transport::Tcp},
    {"online", onlineFrom},
    {"stall", stallOf},
    {"resume", resumeOf},
    {"exit", exitFrom},
};

Names keysBeside(const char* more) {
    Names keys = {"afterMs"};
    if (more != nullptr) keys.emplace_back(more);
    for (const EffectKind& kind : kinds) keys.emplace_back(kind.key);
    return keys;
}

const EffectKind* kindOf(const std::string& key) {
    for (const EffectKind& known : kinds) {
        if (key == known.key) return &known;
    }
    return nullptr;
}

}  // namespace

void requireTransport(const JsonNode& node, Transport needed, Transport actual) {
    if (needed == actual) return;
    node.fail(needed == Transport::Tcp ? "needs a connection, and this run is over window messages"
                                       : "needs window messages, and this run is over TCP");
}

TimedEffect timedEffectFrom(const JsonNode& node, const ScriptUse& use, const char* more) {
    TimedEffect timed;
    timed.afterMs = static_cast<std::uint32_t>(node.integer("afterMs", 0, 0, maxMs));
    int effects = 0;
    for (const auto& [key, value] : node.members()) {
        if (key == "afterMs" || (more != nullptr && key == more)) continue;
        const EffectKind* kind = kindOf(key);
        if (kind == nullptr) node.failUnknownKey(key, keysBeside(more));
        if (kind->only) requireTransport(value, *kind->only, use.transport);
        timed.effect = kind->load(value, use.parameters);
        ++effects;
    }
    if (effects != 1) node.fail("needs exactly one effect such as \"push\"");
    return timed;
}

}  // namespace simulator
