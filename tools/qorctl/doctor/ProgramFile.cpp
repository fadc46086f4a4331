#include "doctor/ProgramFile.h"

#include <fmt/format.h>

#include <fstream>

namespace qorctl::doctor {
namespace {

constexpr std::size_t newHeaderAt = 0x3C;  // where the offset of the real header stands
constexpr std::size_t machineAt = 4;       // behind its signature
constexpr std::size_t flagsAt = 22;
constexpr std::uint16_t isLibrary = 0x2000;
constexpr std::size_t headBytes = 65536;  // linkers put the header into the first few hundred

std::uint32_t numberAt(const std::string& bytes, std::size_t position, std::size_t count) {
    std::uint32_t number = 0;
    for (std::size_t i = count; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[position + i]);
    return number;
}

}  // namespace

std::string ProgramFile::bitness() const {
    if (machine == machine32) return "32-bit";
    if (machine == machine64) return "64-bit";
    return fmt::format("for another processor (0x{:04X})", machine);
}

ProgramFile ProgramFile::parse(const std::string& head) {
    if (head.substr(0, 2) != "MZ") return {Kind::noProgram, 0};
    if (head.size() < newHeaderAt + 4) return {Kind::cutOff, 0};
    const std::size_t header = numberAt(head, newHeaderAt, 4);
    if (header == 0) return {Kind::old, 0};
    if (header > head.size() || head.size() - header < flagsAt + 2) return {Kind::cutOff, 0};
    if (head.compare(header, 4, std::string("PE\0\0", 4)) != 0) return {Kind::old, 0};
    const auto machine = static_cast<std::uint16_t>(numberAt(head, header + machineAt, 2));
    const bool library = (numberAt(head, header + flagsAt, 2) & isLibrary) != 0;
    return {library ? Kind::library : Kind::program, machine};
}

ProgramFile ProgramFile::read(const std::string& path) {
    std::string head(headBytes, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(file.gcount()));
    return parse(head);
}

}  // namespace qorctl::doctor
