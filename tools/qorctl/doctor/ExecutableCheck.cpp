#include "doctor/ExecutableCheck.h"

#include <windows.h>

#include <fmt/format.h>

#include <fstream>

#include "Spelling.h"

namespace qorctl::doctor {
namespace {

const char* const fileId = "executable.file";
const char* const programId = "executable.program";

ExecutableFacts::File fileAt(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (path.empty() || attributes == INVALID_FILE_ATTRIBUTES)
        return ExecutableFacts::File::missing;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return ExecutableFacts::File::folder;
    return std::ifstream(path).is_open() ? ExecutableFacts::File::readable
                                         : ExecutableFacts::File::closed;
}

std::string shownPath(const ExecutableFacts& facts) {
    return facts.resolved == facts.written
               ? facts.resolved
               : fmt::format("{} (from \"{}\")", facts.resolved, facts.written);
}

Finding checkMissing(const ExecutableFacts& facts) {
    if (facts.resolved.empty())
        return Finding::problem(fileId, "\"" + facts.written + "\" is no path",
                                "write the path of QOR's program");
    std::string remedy =
        "correct QORexecutable; without a drive letter it goes by the folder of "
        "the host's program";
    if (facts.isThereWithExe) remedy = "write QORexecutable with the extension .exe";
    if (facts.written.substr(0, 2) == "\\\\")
        remedy =
            "map the network path to a drive letter: without one it goes by the folder of "
            "the host's program";
    if (facts.written.find(';') != std::string::npos)
        remedy = "remove the comment: a value goes to the end of its line";
    return Finding::problem(fileId, shownPath(facts) + " does not exist", remedy);
}

Finding checkFile(const ExecutableFacts& facts) {
    switch (facts.file) {
        case ExecutableFacts::File::missing:
            return checkMissing(facts);
        case ExecutableFacts::File::folder:
            return Finding::problem(fileId, shownPath(facts) + " is a folder",
                                    "write the path of the program in it");
        case ExecutableFacts::File::closed:
            return Finding::problem(fileId, shownPath(facts) + " cannot be read",
                                    "give the account of the host the right to read and run it");
        default:
            return Finding::ok(fileId, shownPath(facts));
    }
}

/// The system starts it, through its command processor.
bool isBatchFile(const std::string& path) {
    const std::string extension = path.size() < 4 ? "" : path.substr(path.size() - 4);
    return isSameName(extension, ".bat") || isSameName(extension, ".cmd");
}

Finding checkProgram(const ExecutableFacts& facts) {
    const ProgramFile& program = facts.program;
    const std::string remedy = "let QORexecutable name QOR's program";
    switch (program.kind) {
        case ProgramFile::Kind::noProgram:
            if (isBatchFile(facts.resolved))
                return Finding::warning(
                    programId, "is a batch file, of which nobody sees how it ends", remedy);
            return Finding::problem(programId, "is no Windows program", remedy);
        case ProgramFile::Kind::cutOff:
            return Finding::problem(programId, "is a Windows program that is cut off or damaged",
                                    "install QOR anew");
        case ProgramFile::Kind::old:
            return Finding::problem(programId, "is a program for DOS or 16-bit Windows", remedy);
        case ProgramFile::Kind::library:
            return Finding::problem(programId, "is a DLL, which cannot be started", remedy);
        default:
            break;
    }
    const std::string what = program.bitness() + " Windows program";
    if (program.isFor32Bit()) return Finding::ok(programId, what);
    if (program.machine == ProgramFile::machine64 && facts.systemRuns64Bit)
        return Finding::ok(programId, what + ", which this Windows can run");
    return Finding::problem(programId, what + ", which this Windows cannot run",
                            "install the 32-bit QOR, or a Windows that can run it");
}

}  // namespace

bool systemRuns64Bit() {
    BOOL isGuest = FALSE;  // a 32-bit program on a 64-bit system
    return sizeof(void*) == 8 || (IsWow64Process(GetCurrentProcess(), &isGuest) && isGuest);
}

ExecutableFacts ExecutableFacts::gather(const std::string& written, const HostPlace& host) {
    ExecutableFacts facts;
    facts.written = written;
    if (written.empty()) return facts;
    facts.resolved = host.resolved(written);
    facts.file = fileAt(facts.resolved);
    facts.isThereWithExe = fileAt(facts.resolved + ".exe") == File::readable;
    if (facts.file == File::readable) facts.program = ProgramFile::read(facts.resolved);
    facts.systemRuns64Bit = doctor::systemRuns64Bit();
    return facts;
}

Findings checkExecutable(const ExecutableFacts& facts) {
    if (facts.written.empty()) return {Finding::ok(fileId, "none named: somebody else starts QOR")};
    Findings findings = {checkFile(facts)};
    if (facts.file == ExecutableFacts::File::readable) findings.push_back(checkProgram(facts));
    return findings;
}

}  // namespace qorctl::doctor
