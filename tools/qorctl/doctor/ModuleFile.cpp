#include "doctor/ModuleFile.h"

#include <windows.h>

#include <fmt/format.h>

#include <vector>

namespace qorctl::doctor {
namespace {

constexpr DWORD maxModuleChars = 32768;

std::string versionOf(const std::string& path) {
    DWORD unused = 0;
    const DWORD size = GetFileVersionInfoSizeA(path.c_str(), &unused);
    std::vector<char> block(size);
    void* found = nullptr;
    UINT length = 0;
    if (size == 0 || !GetFileVersionInfoA(path.c_str(), 0, size, block.data()) ||
        !VerQueryValueA(block.data(), "\\", &found, &length) || length < sizeof(VS_FIXEDFILEINFO))
        return {};
    const auto& info = *static_cast<const VS_FIXEDFILEINFO*>(found);
    return fmt::format("{}.{}.{}.{}", HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS),
                       HIWORD(info.dwFileVersionLS), LOWORD(info.dwFileVersionLS));
}

}  // namespace

bool ModuleFile::isProgramOrDll() const {
    return program.kind == ProgramFile::Kind::program || program.kind == ProgramFile::Kind::library;
}

std::string ModuleFile::folder() const {
    return path.substr(0, path.find_last_of("\\/") + 1);
}

std::string ModuleFile::description() const {
    const std::string size = fmt::format("{} bytes", bytes);
    return fmt::format("{}, {}, {}", version.empty() ? size : "version " + version,
                       program.bitness(), path);
}

ModuleFile ModuleFile::at(const std::string& path) {
    ModuleFile file;
    file.name = path.substr(path.find_last_of("\\/") + 1);
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) ||
        (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return file;
    file.path = path;
    file.bytes = static_cast<unsigned long long>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
    file.version = versionOf(path);
    file.program = ProgramFile::read(path);
    return file;
}

ModuleFile ModuleFile::loaded(const char* name) {
    ModuleFile none;
    none.name = name;
    HMODULE const module = GetModuleHandleA(name);
    if (module == nullptr) return none;
    std::string path(maxModuleChars, '\0');
    path.resize(GetModuleFileNameA(module, path.data(), maxModuleChars));
    return at(path);
}

}  // namespace qorctl::doctor
