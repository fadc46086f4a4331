#pragma once

#include <cstdint>
#include <string>

namespace qorctl::doctor {

/// What the head of a file says about the program in it.
struct ProgramFile {
    enum class Kind {
        noProgram,  ///< no Windows program at all
        cutOff,     ///< begins like one, but its header is not there
        old,        ///< for DOS or 16-bit Windows
        program,
        library,  ///< a DLL, which cannot be started
    };
    static constexpr std::uint16_t machine32 = 0x014C;  // x86
    static constexpr std::uint16_t machine64 = 0x8664;  // x64

    Kind kind = Kind::noProgram;
    std::uint16_t machine = 0;  ///< of a program or a library

    bool isFor32Bit() const { return machine == machine32; }
    /// "32-bit", "64-bit" or the number of another processor.
    std::string bitness() const;

    /// `head` is the beginning of a file.
    static ProgramFile parse(const std::string& head);
    /// Of a file that cannot be read: no program.
    static ProgramFile read(const std::string& path);
};

}  // namespace qorctl::doctor
