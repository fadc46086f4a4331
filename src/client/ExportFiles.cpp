#include "client/ExportFiles.h"

#include <windows.h>

#include <atomic>
#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "trace/OneLine.h"
#include "trace/Trace.h"

namespace exportfiles {
namespace {

constexpr std::uint32_t stageExport = 4;
constexpr std::uint32_t stageAddExport = 5;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// How many bytes of it the system has taken for the target.
std::size_t copy(const std::string& source, const char* target) {
    const File from(std::fopen(source.c_str(), "rb"));
    const File to(std::fopen(target, "wb"));
    if (!from || !to) return 0;
    std::vector<char> bytes(maxBytes);
    const std::size_t length = std::fread(bytes.data(), 1, bytes.size(), from.get());
    const std::size_t written = std::fwrite(bytes.data(), 1, length, to.get());
    return std::fflush(to.get()) == 0 ? written : 0;
}

/// A file of QOR's choosing goes, and one that all programs know comes: a line for each. Its path
/// comes last: a long one is cut.
void tell(const std::string& source, const char* target, std::size_t bytes) {
    static std::atomic<unsigned int> asked{0};
    tracelog::trace(tracelog::libraryModule, tracelog::information, 0,
                    "Export %u that QOR has asked for: %u bytes to '%s' from '%s'\n", ++asked,
                    static_cast<unsigned int>(bytes), target, tracelog::oneLine(source).c_str());
}

void move(const std::vector<std::string>& files, const char* target) {
    if (files.empty()) return;
    std::size_t bytes = 0;
    try {
        bytes = copy(files.front(), target);
    } catch (const std::bad_alloc&) {
        // The source goes in every case.
    }
    DeleteFileA(files.front().c_str());
    tell(files.front(), target, bytes);
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
