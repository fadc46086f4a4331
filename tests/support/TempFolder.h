#pragma once

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

/// A new folder of the test's own, gone with this object.
class TempFolder {
public:
    TempFolder() {
        char base[MAX_PATH] = "";
        GetTempPathA(sizeof base, base);
        static int counter = 0;
        char name[MAX_PATH + 64];
        std::snprintf(name, sizeof name, "%sqor-test-%lu-%lu-%d", base, GetCurrentProcessId(),
                      GetTickCount(), ++counter);
        path_ = name;
        if (!CreateDirectoryA(name, nullptr)) throw std::runtime_error("no temporary folder");
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string pathOf(const std::string& name) const { return path_ + "\\" + name; }

    /// Makes or replaces a file with exactly these bytes; gives its path.
    std::string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(pathOf(name), std::ios::binary) << bytes;
        return pathOf(name);
    }
    /// As `write`, with the system's line ends in place of LF.
    std::string writeText(const std::string& name, const std::string& text) const {
        std::ofstream(pathOf(name)) << text;
        return pathOf(name);
    }
    /// The text with LF as line end; empty if there is no such file.
    std::string readText(const std::string& name) const {
        std::ifstream file(pathOf(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::string path_;
};

inline bool fileExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

inline std::string bytesOfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The lines of a text file without their ends; a last line without end counts, too.
inline std::vector<std::string> linesOfFile(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}
