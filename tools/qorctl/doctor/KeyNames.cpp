#include "doctor/KeyNames.h"

#include <fmt/format.h>

#include <algorithm>

#include "Spelling.h"

namespace qorctl::doctor {
namespace {

const char* const fileId = "settings.file";
const char* const saveWithoutMark = "save it without the mark (ANSI, or UTF-8 without BOM)";

Finding checkFile(const SettingsFacts& facts) {
    switch (facts.file) {
        case SettingsFacts::File::missing:
            return Finding::problem(fileId, facts.path + " does not exist",
                                    "give the path of QOR's settings file; a host's path without "
                                    "a drive letter goes by the folder of the host's program");
        case SettingsFacts::File::folder:
            return Finding::problem(fileId, facts.path + " is a folder",
                                    "give the path of the settings file in it");
        case SettingsFacts::File::closed:
            return Finding::problem(fileId, facts.path + " cannot be read",
                                    "give the account of the host the right to read it");
        default:
            break;
    }
    if (!facts.isText)
        return Finding::problem(
            fileId, facts.path + " is no text file",
            "give the path of QOR's settings file, a text of sections and keys");
    if (!facts.hiddenLine.empty())
        return Finding::problem(
            fileId,
            fmt::format("{} begins with a UTF-8 mark, which hides the line {} from Windows",
                        facts.path, facts.hiddenLine),
            saveWithoutMark);
    if (facts.hasMark)
        return Finding::warning(
            fileId,
            facts.path +
                " begins with a UTF-8 mark; it hides nothing only because the first line "
                "is no section and no key",
            saveWithoutMark);
    return Finding::ok(fileId, facts.path);
}

Findings checkSection(const SettingsFacts& facts) {
    const std::string id = "settings.section";
    const auto count = std::count_if(
        facts.sections.begin(), facts.sections.end(),
        [](const SettingsFacts::Section& one) { return isSameName(one.name, settingsSection); });
    if (count == 1) return {};
    if (count > 1)
        return {Finding::warning(id,
                                 fmt::format("section {} stands {} times: only the first is read",
                                             settingsSection, count),
                                 "put all its keys into one section")};
    const std::string expected = fmt::format("name it [{}]", settingsSection);
    for (const auto& section : facts.sections)
        if (isMisspelling(section.name, settingsSection))
            return {Finding::problem(
                id, fmt::format("section [{}] is not read, it is misspelt", section.name),
                expected)};
    return {Finding::problem(
        id, fmt::format("there is no section {}: every key has its default", settingsSection),
        fmt::format("put the keys below a line [{}]", settingsSection))};
}

/// What keeps a key from being read is a problem where the key is wanted: the file says something
/// that no host hears. (InitMFC is set for hosts of a kind of their own.)
Finding unread(const SettingsFacts& facts, const SettingsKey& key, const std::string& id,
               const std::string& what, const std::string& remedy) {
    const bool isWanted =
        !facts[key.name].isThere && isUsed(key, facts) && key.name != std::string("InitMFC");
    return isWanted ? Finding::problem(id, what, remedy) : Finding::warning(id, what, remedy);
}

bool isKnown(const std::string& name) {
    return std::any_of(settingsKeys().begin(), settingsKeys().end(),
                       [&](const SettingsKey& key) { return isSameName(name, key.name); });
}

Findings checkSpelling(const SettingsFacts& facts, const std::string& name) {
    for (const SettingsKey& key : settingsKeys())
        if (isMisspelling(name, key.name))
            return {unread(facts, key, "settings.misspelt." + name,
                           fmt::format("{} is not read: misspelt for {}", name, key.name),
                           fmt::format("write {} in its place", key.name))};
    return {};
}

Findings checkOwnSection(const SettingsFacts& facts, const SettingsFacts::Section& section) {
    Findings findings;
    std::vector<std::string> seen;
    for (const std::string& name : section.keys) {
        const bool again = std::any_of(seen.begin(), seen.end(), [&](const std::string& one) {
            return isSameName(one, name);
        });
        seen.push_back(name);
        if (!isKnown(name)) {
            if (!again) append(findings, checkSpelling(facts, name));
        } else if (again) {
            findings.push_back(Finding::warning("settings.twice." + name,
                                                name + " stands twice: only the first is read",
                                                "remove the one that is wrong"));
        }
    }
    return findings;
}

Findings checkOtherSection(const SettingsFacts& facts, const SettingsFacts::Section& section) {
    // A misspelt section is one finding, not one for each of its keys.
    if (isMisspelling(section.name, settingsSection)) return {};
    Findings findings;
    for (const SettingsKey& key : settingsKeys())
        for (const std::string& name : section.keys)
            if (isSameName(name, key.name) && !facts[key.name].isThere)
                findings.push_back(unread(
                    facts, key, fmt::format("settings.elsewhere.{}", name),
                    fmt::format("{} stands in [{}], where it is not read", name, section.name),
                    fmt::format("move it to [{}]", settingsSection)));
    return findings;
}

}  // namespace

Findings checkNames(const SettingsFacts& facts) {
    Findings findings = {checkFile(facts)};
    if (facts.file != SettingsFacts::File::readable || !facts.isText) return findings;
    append(findings, checkSection(facts));
    for (const auto& section : facts.sections)
        append(findings, isSameName(section.name, settingsSection)
                             ? checkOwnSection(facts, section)
                             : checkOtherSection(facts, section));
    return findings;
}

}  // namespace qorctl::doctor
