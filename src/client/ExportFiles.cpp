#include "client/ExportFiles.h"

#include <windows.h>

#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace exportfiles {
namespace {

constexpr std::uint32_t stageExport = 4;
constexpr std::uint32_t stageAddExport = 5;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

void copy(const std::string& source, const char* target) {
    const File from(std::fopen(source.c_str(), "rb"));
    const File to(std::fopen(target, "wb"));
    if (!from || !to) return;
    std::vector<char> bytes(maxBytes);
    const std::size_t length = std::fread(bytes.data(), 1, bytes.size(), from.get());
    std::fwrite(bytes.data(), 1, length, to.get());
}

void move(const std::vector<std::string>& files, const char* target) {
    if (files.empty()) return;
    try {
        copy(files.front(), target);
    } catch (const std::bad_alloc&) {
        // The source goes in every case.
    }
    DeleteFileA(files.front().c_str());
}

}  // namespace

void handle(const protocol::StartEdit& record) {
    // Stage 1 tells about the model (name, version, description, EEPROM_ID, crc32), which nobody
    // asks for; all other stages are QOR's own business.
    if (record.stage == stageExport)
        move(record.files, exportTarget);
    else if (record.stage == stageAddExport)
        move(record.addFiles, addExportTarget);
}

}  // namespace exportfiles
