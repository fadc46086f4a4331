#pragma once

#include <string>
#include <string_view>

/// While there is one, no file of the system is opened by name: the file to read has the given
/// content, and what is written goes nowhere. (The programs are linked with --wrap=fopen.)
class OpenFiles {
public:
    explicit OpenFiles(std::string_view content);
    ~OpenFiles();
    OpenFiles(const OpenFiles&) = delete;
    OpenFiles& operator=(const OpenFiles&) = delete;

    /// What the file to read has from the next opening on.
    void replace(std::string_view content);
};
