#include "behaviour/ExportFiles.h"

#include <fstream>
#include <stdexcept>

namespace simulator {

std::string ExportFiles::create(std::uint32_t bytes) {
    std::string path = prefix_ + std::to_string(++created_) + ".sde";
    std::string content(bytes, '\0');
    for (std::uint32_t i = 0; i < bytes; ++i) content[i] = contentAt(i);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content << std::flush;
    if (!file) throw std::runtime_error(path + ": the export file cannot be written");
    return path;
}

char ExportFiles::contentAt(std::uint32_t position) {
    return static_cast<char>((position * 31U + position / 251U) & 0xFFU);
}

}  // namespace simulator
