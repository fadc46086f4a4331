#pragma once

#include <cstdint>
#include <string>

namespace simulator {

/// Makes the files that a model edit exports. Whoever is told of a file deletes it.
class ExportFiles {
public:
    /// Every file name begins with folderAndPrefix.
    explicit ExportFiles(std::string folderAndPrefix) : prefix_(std::move(folderAndPrefix)) {}

    /// Returns the path. Throws std::runtime_error when the file cannot be written.
    std::string create(std::uint32_t bytes);

    /// Byte `position` of every export file, so that a reader can tell a cut or shifted copy.
    static char contentAt(std::uint32_t position);

private:
    std::string prefix_;
    unsigned created_ = 0;
};

}  // namespace simulator
