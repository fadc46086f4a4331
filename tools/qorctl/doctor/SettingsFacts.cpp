#include "doctor/SettingsFacts.h"

#include <windows.h>

#include <algorithm>
#include <fstream>

#include "Spelling.h"

namespace qorctl::doctor {
namespace {

// More than the library reads of any value, and than the system gives of a section.
constexpr DWORD maxChars = 65536;
constexpr std::size_t headBytes = 4096;

/// What a profile function of the system fills, without what it has left unused.
template <class Text, class Fill>
Text filled(Fill fill) {
    Text text(maxChars, 0);
    text.resize(fill(text.data()));
    return text;
}

std::string textOf(const std::string& path, const char* key) {
    return filled<std::string>([&](char* buffer) {
        return GetPrivateProfileStringA(settingsSection, key, "", buffer, maxChars, path.c_str());
    });
}

std::wstring wideOf(const std::string& ansi) {
    return filled<std::wstring>([&](wchar_t* buffer) {
        return static_cast<DWORD>(MultiByteToWideChar(CP_ACP, 0, ansi.data(),
                                                      static_cast<int>(ansi.size()), buffer,
                                                      static_cast<int>(maxChars)));
    });
}

std::wstring wideTextOf(const std::string& path, const char* key) {
    return filled<std::wstring>([&](wchar_t* buffer) {
        return GetPrivateProfileStringW(wideOf(settingsSection).c_str(), wideOf(key).c_str(), L"",
                                        buffer, maxChars, wideOf(path).c_str());
    });
}

/// The zero-ended names that stand one behind the other.
std::vector<std::string> namesIn(const std::string& list) {
    std::vector<std::string> names;
    for (std::size_t first = 0; first < list.size();) {
        const std::string name = list.c_str() + first;
        first += name.size() + 1;
        if (!name.empty()) names.push_back(name);
    }
    return names;
}

/// Windows only knows the first; the others are what people write all the same.
bool isComment(const std::string& line) {
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string::npos) return false;
    return line[first] == ';' || line[first] == '#' || line.compare(first, 2, "//") == 0;
}

std::vector<std::string> keysOf(const std::string& path, const std::string& section) {
    std::vector<std::string> keys;
    for (const std::string& line : namesIn(filled<std::string>([&](char* buffer) {
             return GetPrivateProfileSectionA(section.c_str(), buffer, maxChars, path.c_str());
         }))) {
        const std::size_t equals = line.find('=');
        if (isComment(line) || equals == std::string::npos) continue;
        keys.push_back(line.substr(0, line.find_last_not_of(" \t", equals - 1) + 1));
    }
    return keys;
}

std::vector<SettingsFacts::Section> sectionsOf(const std::string& path) {
    std::vector<SettingsFacts::Section> sections;
    for (const std::string& name : namesIn(filled<std::string>([&](char* buffer) {
             return GetPrivateProfileSectionNamesA(buffer, maxChars, path.c_str());
         })))
        sections.push_back({name, {}});
    // Of sections with one name only the first is ever read.
    for (auto section = sections.begin(); section != sections.end(); ++section)
        if (std::none_of(sections.begin(), section, [&](const SettingsFacts::Section& earlier) {
                return isSameName(earlier.name, section->name);
            }))
            section->keys = keysOf(path, section->name);
    return sections;
}

bool hasKey(const std::vector<SettingsFacts::Section>& sections, const char* key) {
    for (const auto& section : sections) {
        if (!isSameName(section.name, settingsSection)) continue;
        for (const std::string& name : section.keys)
            if (isSameName(name, key)) return true;
    }
    return false;
}

SettingsFacts::File fileAt(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return SettingsFacts::File::missing;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return SettingsFacts::File::folder;
    return std::ifstream(path).is_open() ? SettingsFacts::File::readable
                                         : SettingsFacts::File::closed;
}

/// The system reads UTF-16 by its mark.
bool isTextAt(const std::string& path) {
    std::string head(headBytes, ' ');
    std::ifstream file(path, std::ios::binary);
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(file.gcount()));
    return head.compare(0, 2, "\xFF\xFE") == 0 || head.find('\0') == std::string::npos;
}

void findMark(SettingsFacts& facts) {
    const std::string mark = "\xEF\xBB\xBF";
    const std::string blanks = " \t\r";
    std::string line;
    std::ifstream file(facts.path, std::ios::binary);
    std::getline(file, line);
    facts.hasMark = line.compare(0, mark.size(), mark) == 0;
    if (!facts.hasMark) return;
    line.erase(0, mark.size());
    const std::size_t first = line.find_first_not_of(blanks);
    if (first == std::string::npos || isComment(line)) return;
    if (line[first] != '[' && line.find('=') == std::string::npos) return;
    facts.hiddenLine = line.substr(first, line.find_last_not_of(blanks) + 1 - first);
}

}  // namespace

bool SettingsFacts::usesTcp() const {
    const auto found = values.find("UseTcp");
    return found != values.end() && isSameName(found->second.text.substr(0, maxValueChars), "true");
}

SettingsFacts SettingsFacts::read(const std::string& path) {
    SettingsFacts facts;
    facts.path = path;
    facts.file = fileAt(path);
    facts.isText = facts.file != File::readable || isTextAt(path);
    if (facts.file == File::readable && facts.isText) {
        findMark(facts);
        facts.sections = sectionsOf(path);
    }
    for (const SettingsKey& key : settingsKeys()) {
        Value& value = facts.values[key.name];
        value.isThere = hasKey(facts.sections, key.name);
        value.text = textOf(path, key.name);
        value.losesCharacters = wideOf(value.text) != wideTextOf(path, key.name);
        if (key.isNumber)
            value.number =
                GetPrivateProfileIntA(settingsSection, key.name, key.absent, path.c_str());
    }
    return facts;
}

bool isUsed(const SettingsKey& key, const SettingsFacts& facts) {
    return key.usedBy == UsedBy::both || (key.usedBy == UsedBy::tcp) == facts.usesTcp();
}

}  // namespace qorctl::doctor
