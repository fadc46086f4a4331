#include "doctor/CodePageCheck.h"

#include <fmt/format.h>

namespace qorctl::doctor {
namespace {

constexpr unsigned utf8CodePage = 65001;

/// How many bytes follow this one in a UTF-8 character; -1: none can begin with it.
int followersOf(unsigned char first) {
    if (first < 0x80) return 0;
    if (first >= 0xC2 && first <= 0xDF) return 1;
    if (first >= 0xE0 && first <= 0xEF) return 2;
    return first >= 0xF0 && first <= 0xF4 ? 3 : -1;
}

Findings checkText(unsigned codePage, const std::string& key, const SettingsFacts::Value& value) {
    const std::string id = "codepage." + key;
    if (value.losesCharacters)
        return {Finding::problem(
            id, fmt::format("\"{}\" has characters that code page {} lacks", value.text, codePage),
            "use names in plain ASCII, or set the system's language for non-Unicode programs")};
    if (codePage != utf8CodePage && looksLikeUtf8(value.text))
        return {Finding::warning(id,
                                 fmt::format("\"{}\" looks like UTF-8, but is read in code page {}",
                                             value.text, codePage),
                                 "save the settings as ANSI text, or use names in plain ASCII")};
    return {};
}

}  // namespace

bool looksLikeUtf8(const std::string& bytes) {
    bool isAscii = true;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const int followers = followersOf(static_cast<unsigned char>(bytes[i]));
        if (followers < 0) return false;
        if (followers > 0) isAscii = false;
        for (int k = 0; k < followers; ++k)
            if (++i >= bytes.size() || (static_cast<unsigned char>(bytes[i]) & 0xC0) != 0x80)
                return false;
    }
    return !isAscii;
}

Findings checkCodePage(unsigned codePage, const SettingsFacts& facts) {
    Findings findings = {Finding::ok("codepage", fmt::format("ANSI code page {}", codePage))};
    // What the code page lacks stands in a command line as a question mark, which no path has.
    if (facts.path.find('?') != std::string::npos)
        findings.push_back(Finding::problem(
            "codepage.path",
            fmt::format("{} has characters that code page {} lacks", facts.path, codePage),
            "move the settings to a path in plain ASCII"));
    for (const SettingsKey& key : settingsKeys())
        append(findings, checkText(codePage, key.name, facts[key.name]));
    return findings;
}

}  // namespace qorctl::doctor
