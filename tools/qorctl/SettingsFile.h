#pragma once

#include <string>

namespace qorctl {

/// The settings file that the library is given: the user's own, or, where another transport is
/// wanted than the one it chooses, a copy beside it, which is removed with this object. (Beside
/// it, because QOR takes paths in it as relative to its folder.)
class SettingsFile {
public:
    /// `transport` is "tcp", "window" or empty for what the file says. Throws std::runtime_error
    /// if the copy cannot be made. A file that is not there is the library's to complain of.
    SettingsFile(const std::string& path, const std::string& transport);
    ~SettingsFile();
    SettingsFile(const SettingsFile&) = delete;
    SettingsFile& operator=(const SettingsFile&) = delete;

    const std::string& path() const { return path_; }

    /// The transport that it chooses, for people.
    std::string transport() const;
    bool usesTcp() const;

    /// Of any section; empty if it is not there.
    std::string value(const char* section, const char* key) const;

private:
    std::string value(const char* key) const;

    std::string path_;
    bool isCopy_ = false;
};

}  // namespace qorctl
