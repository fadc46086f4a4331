#include "doctor/KeyValues.h"

#include <fmt/format.h>

#include <algorithm>

#include "Spelling.h"

namespace qorctl::doctor {
namespace {

constexpr unsigned maxPort = 65535;

std::string idOf(const char* key) {
    return std::string("settings.") + key;
}

bool isAnyOf(const std::string& text, const std::vector<const char*>& words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const char* word) { return isSameName(text, word); });
}

bool isPlainNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// The value and where it comes from.
std::string shownValue(const SettingsFacts& facts, const SettingsKey& key) {
    const SettingsFacts::Value& value = facts[key.name];
    if (value.isThere && !value.text.empty()) return fmt::format("\"{}\" (file)", value.text);
    const char* const origin = value.isThere ? "empty in the file" : "default, not in the file";
    const std::string read = key.isNumber ? std::to_string(value.number) : "\"\"";
    return fmt::format("{} ({})", read, origin);
}

Finding checkUseTcp(const SettingsFacts& facts, const std::string& value) {
    const std::string id = idOf("UseTcp");
    if (facts.usesTcp()) return Finding::ok(id, value + ": TCP");
    const std::string what = value + ": window messages";
    if (isAnyOf(facts["UseTcp"].text, {"", "false", "0", "no", "off"}))
        return Finding::ok(id, what);
    return Finding::warning(id, what + ", as for every text but \"true\"",
                            "write UseTcp=true for TCP, UseTcp=false for window messages");
}

Finding checkPort(const SettingsFacts& facts, const std::string& value) {
    const std::string id = idOf("TcpPort");
    const std::string remedy = "write the port of QOR's listening socket, 1 to 65535, in digits";
    const SettingsFacts::Value& port = facts["TcpPort"];
    const bool isPlain = isPlainNumber(port.text);
    if (!port.isThere) return Finding::problem(id, value + ": no port", remedy);
    if (port.number == 0 || port.number > maxPort || port.text.find('-') != std::string::npos)
        return Finding::problem(
            id, fmt::format("{}: {}", value, isPlain ? "out of range" : "not a number"), remedy);
    if (!isPlain)
        return Finding::warning(id, fmt::format("{}: not a number, read as {}", value, port.number),
                                remedy);
    return Finding::ok(id, value);
}

Finding checkAddress(const SettingsFacts& facts, const std::string& value) {
    if (!facts["ServerIp"].text.empty()) return Finding::ok(idOf("ServerIp"), value);
    return Finding::warning(idOf("ServerIp"),
                            value +
                                ": an address of this machine, as the "
                                "system chooses",
                            "write ServerIp=127.0.0.1 where QOR runs on this machine");
}

Finding checkTitle(const SettingsFacts& facts, const SettingsKey& key, const std::string& value) {
    const std::string id = idOf(key.name);
    if (facts[key.name].text.empty())
        return Finding::problem(id, value + ": a window without a title is never found",
                                fmt::format("write {}=TITLE, the same as QOR has", key.name));
    if (isSameName(facts["ServerPipeName"].text, facts["ClientPipeName"].text))
        return Finding::problem(id, value + ": QOR's window and the host's have the same title",
                                "give ServerPipeName and ClientPipeName different values");
    return Finding::ok(id, value);
}

Finding checkFramework(const SettingsFacts& facts, const std::string& value) {
    const std::string id = idOf("InitMFC");
    const SettingsFacts::Value& flag = facts["InitMFC"];
    if (flag.isThere && !isPlainNumber(flag.text))
        return Finding::warning(
            id, fmt::format("{}: not a number, read as {}", value, flag.number),
            "write InitMFC=1, or 0 for a host that has the window framework of its own");
    return Finding::ok(id, value);
}

Finding checkKey(const SettingsFacts& facts, const SettingsKey& key) {
    const std::string name = key.name;
    const std::string value = shownValue(facts, key);
    if (!isUsed(key, facts))
        return Finding::ok(idOf(key.name), value + ", not used over " +
                                               (facts.usesTcp() ? "TCP" : "window messages"));
    const std::size_t limit = name == "QORexecutable" ? maxPathChars : maxValueChars;
    if (facts[key.name].text.size() > limit)
        return Finding::problem(
            idOf(key.name),
            fmt::format("{} characters, of which {} are read", facts[key.name].text.size(), limit),
            "write a shorter value");
    if (name == "UseTcp") return checkUseTcp(facts, value);
    if (name == "TcpPort") return checkPort(facts, value);
    if (name == "ServerIp") return checkAddress(facts, value);
    if (name == "InitMFC") return checkFramework(facts, value);
    if (key.usedBy == UsedBy::window) return checkTitle(facts, key, value);
    if (facts[key.name].text.empty())
        return Finding::ok(idOf(key.name), value + ": a host does not start QOR");
    return Finding::ok(idOf(key.name), value);
}

}  // namespace

Findings checkValues(const SettingsFacts& facts) {
    Findings findings;
    for (const SettingsKey& key : settingsKeys()) findings.push_back(checkKey(facts, key));
    return findings;
}

}  // namespace qorctl::doctor
