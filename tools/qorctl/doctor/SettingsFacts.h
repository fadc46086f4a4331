#pragma once

#include <map>
#include <string>
#include <vector>

#include "doctor/SettingsKeys.h"

namespace qorctl::doctor {

/// What a settings file holds, as the system reads it for the library.
struct SettingsFacts {
    enum class File { readable, missing, folder, closed };
    struct Value {
        bool isThere = false;
        std::string text;     ///< whole, however long
        unsigned number = 0;  ///< of a key that is a number
        /// Whether the file's text has characters that the ANSI code page lacks.
        bool losesCharacters = false;
    };
    struct Section {
        std::string name;
        std::vector<std::string> keys;  ///< without those that are commented out
    };

    std::string path;
    File file = File::missing;
    bool isText = true;  ///< of a readable file: it has no zero bytes, but for UTF-16's
    /// The three bytes that some editors put in front of UTF-8 are part of the first line to
    /// Windows.
    bool hasMark = false;
    /// What they hide in this way: a section's or a key's line. Empty: nothing, the line is blank,
    /// a comment or no more than words.
    std::string hiddenLine;
    std::vector<Section> sections;
    std::map<std::string, Value> values;  ///< one for each known key

    const Value& operator[](const char* key) const { return values.at(key); }
    bool usesTcp() const;

    static SettingsFacts read(const std::string& path);
};

/// Whether the transport that the settings choose reads the key.
bool isUsed(const SettingsKey& key, const SettingsFacts& facts);

}  // namespace qorctl::doctor
