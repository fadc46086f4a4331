#pragma once

#include <vector>

namespace qorctl::doctor {

/// Which transport reads a key.
enum class UsedBy { both, tcp, window };

/// What the library reads of QOR's settings file. The library's own reading is the truth; a test
/// holds this table against it.
struct SettingsKey {
    const char* name;
    bool isNumber;
    int absent;  ///< what a number counts as where the file has none; a text counts as empty
    UsedBy usedBy;
};

constexpr const char* settingsSection = "CommonSettings";

/// More characters of a value do not count; those of the executable's path are `maxPathChars`.
constexpr std::size_t maxValueChars = 5199;
constexpr std::size_t maxPathChars = 9999;

const std::vector<SettingsKey>& settingsKeys();

}  // namespace qorctl::doctor
