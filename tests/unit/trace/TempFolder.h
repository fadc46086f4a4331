#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace testing_support {

/// A folder of its own for one test, removed with all that is in it. Its path holds none of the
/// words that a line of trace settings would take for a switch.
class TempFolder {
public:
    TempFolder() : path_(std::filesystem::temp_directory_path() / uniqueName()) {
        const std::string text = path_.string();
        for (const char* word : {"notrace", "tid", "tc", "hpc", "dt", "nid", "tl", "ts", "tfr",
                                 "include", "exclude"}) {
            if (text.find(word) != std::string::npos)
                throw std::runtime_error("set TMP to a folder without '" + std::string(word) +
                                         "' in its path, not " + text);
        }
        std::filesystem::create_directory(path_);
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string file(const std::string& name) const { return (path_ / name).string(); }

    std::string write(const std::string& name, const std::string& text) const {
        std::ofstream(file(name)) << text;
        return file(name);
    }

    /// The text with LF as line end; empty if there is no such file.
    std::string read(const std::string& name) const {
        std::ifstream stream(file(name));
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }

    bool has(const std::string& name) const { return std::filesystem::exists(file(name)); }

private:
    static std::string uniqueName() {
        static int count = 0;
        return "q" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);
    }

    std::filesystem::path path_;
};

}  // namespace testing_support
