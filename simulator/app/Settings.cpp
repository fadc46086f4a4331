#include "app/Settings.h"

#include <algorithm>
#include <cctype>
#include <sstream>

#include "config/JsonNode.h"

namespace simulator {

namespace {

constexpr const char* commonSection = "CommonSettings";
constexpr std::uint32_t maxMs = 86400000;  // a day

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    });
    return text;
}

[[noreturn]] void fail(const std::string& section, const std::string& key,
                       const std::string& reason) {
    throw ConfigError("[" + section + "] " + key + ": " + reason);
}

std::uint32_t wholeNumber(const std::string& section, const std::string& key,
                          const std::string& text, std::uint32_t highest) {
    const bool digitsOnly =
        !text.empty() && text.size() <= 10 &&
        std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    const std::uint64_t value = digitsOnly ? std::stoull(text) : UINT64_MAX;
    if (value > highest) {
        fail(section, key,
             "\"" + text + "\" is not a whole number from 0 to " + std::to_string(highest));
    }
    return static_cast<std::uint32_t>(value);
}

bool isAbsolute(const std::string& path) {
    const bool hasDrive = path.size() > 1 && path[1] == ':';
    return hasDrive || (!path.empty() && (path[0] == '\\' || path[0] == '/'));
}

std::string resolved(const std::string& path, const std::string& folder) {
    if (path.empty() || isAbsolute(path)) return path;
    return folder + path;
}

AnswerStyle answerStyleFrom(const std::string& text) {
    if (text.empty() || text == "stamped") return AnswerStyle::Stamped;
    if (text == "separate") return AnswerStyle::Separate;
    fail(ownSection, "AnswerStyle", "\"" + text + "\" is neither \"stamped\" nor \"separate\"");
}

bool isIpByte(const std::string& text) {
    return !text.empty() && text.size() <= 3 &&
           text.find_first_not_of("0123456789") == std::string::npos && std::stoi(text) <= 255;
}

std::string serverIpFrom(const std::string& text) {
    if (text.empty() || lower(text) == "localhost") return "127.0.0.1";
    std::istringstream parts(text);
    std::string part;
    int count = 0;
    while (std::getline(parts, part, '.')) {
        if (!isIpByte(part)) count = 5;
        ++count;
    }
    if (count != 4 || text.back() == '.') {
        fail(commonSection, "ServerIp", "\"" + text + "\" is no address such as 127.0.0.1");
    }
    return text;
}

WindowAnswer windowAnswerFrom(const std::string& text) {
    if (text == "inside") return WindowAnswer::Inside;
    if (text.empty() || text == "released") return WindowAnswer::Released;
    if (text == "later") return WindowAnswer::Later;
    fail(ownSection, "WindowAnswer", "\"" + text + "\" is none of inside, released, later");
}

/// Windows are looked up by their titles, whatever the case.
void readTitles(const SettingsReader& read, Settings& settings) {
    const auto title = [&](const char* key) {
        std::string text = read(commonSection, key);
        if (text.empty()) fail(commonSection, key, "is missing, and UseTcp is not \"true\"");
        return text;
    };
    settings.serverTitle = title("ServerPipeName");
    settings.clientTitle = title("ClientPipeName");
    if (lower(settings.serverTitle) == lower(settings.clientTitle)) {
        fail(commonSection, "ClientPipeName", "must differ from ServerPipeName");
    }
}

void readTcp(const SettingsReader& read, Settings& settings) {
    settings.serverIp = serverIpFrom(read(commonSection, "ServerIp"));
    settings.tcpPort = static_cast<std::uint16_t>(
        wholeNumber(commonSection, "TcpPort", read(commonSection, "TcpPort"), 65535));
    if (settings.tcpPort == 0) fail(commonSection, "TcpPort", "must not be 0");
}

void readPaths(const SettingsReader& read, const Places& places, Settings& settings) {
    const auto path = [&](const char* key) {
        return resolved(read(ownSection, key), places.settingsFolder);
    };
    settings.modelPath = path("Model");
    if (settings.modelPath.empty()) settings.modelPath = places.programFolder + "engine.json";
    settings.scriptPath = path("Script");
    settings.recordLogPath = path("RecordLog");
    settings.exportPrefix = path("ExportPrefix");
    if (settings.exportPrefix.empty()) settings.exportPrefix = places.exportPrefix;
}

}  // namespace

void refuseUnknownKeys(const Names& keysOfOwnSection) {
    static const Names known = {
        "Model",        "Script",      "AnswerStyle",         "WindowAnswer",
        "WindowSendMs", "ConnectMs",   "ExitWithoutClientMs", "RecordLog",
        "Log",          "ExportPrefix"};
    for (const std::string& key : keysOfOwnSection) {
        // The system finds keys whatever their case.
        const bool isKnown = std::any_of(known.begin(), known.end(), [&](const std::string& name) {
            return lower(name) == lower(key);
        });
        if (!isKnown) fail(ownSection, key, "unknown key" + hintFor(key, known));
    }
}

std::string logPathFrom(const SettingsReader& read, const Places& places) {
    return resolved(read(ownSection, "Log"), places.settingsFolder);
}

Settings settingsFrom(const SettingsReader& read, const Places& places) {
    Settings settings;
    readPaths(read, places, settings);
    if (lower(read(commonSection, "UseTcp")) == "true") {
        readTcp(read, settings);
    } else {
        settings.transport = Transport::WindowMessages;
        readTitles(read, settings);
    }
    settings.answerStyle = answerStyleFrom(lower(read(ownSection, "AnswerStyle")));
    settings.windowAnswer = windowAnswerFrom(lower(read(ownSection, "WindowAnswer")));
    const auto milliseconds = [&](const char* key, std::uint32_t missing) {
        const std::string text = read(ownSection, key);
        return text.empty() ? missing : wholeNumber(ownSection, key, text, maxMs);
    };
    settings.connectMs = milliseconds("ConnectMs", settings.connectMs);
    settings.exitWithoutClientMs =
        milliseconds("ExitWithoutClientMs", settings.exitWithoutClientMs);
    settings.windowSendMs = milliseconds("WindowSendMs", settings.windowSendMs);
    // 0 means "for ever" to some systems and "not at all" to others.
    if (settings.windowSendMs == 0) fail(ownSection, "WindowSendMs", "must not be 0");
    return settings;
}

}  // namespace simulator
