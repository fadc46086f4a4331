// Exceptions within this DLL, whatever the host's program has loaded.
//
// The DLL has the run-time libraries inside, so the code that unwinds its stack is its own. But the
// start-up code of the compiler hands the tables for that to the shared run-time library as soon as
// the process has one, which a host built by the same compiler has: our own copy would then know of
// no function of ours, and the first exception would end the process. So the tables are given to
// our own copy here, unless it has them.

#include <windows.h>

#include <cstdint>

extern "C" {

// Of the run-time library's unwinder.
struct dwarf_eh_bases {
    void* tbase;
    void* dbase;
    void* func;
};
const void* _Unwind_Find_FDE(void* pc, dwarf_eh_bases* bases);
void __register_frame(void* begin);
void __deregister_frame(void* begin);

// Some place within the tables; they have a section of the image for themselves.
extern const char qorWithinUnwindTables[];
__asm__(
    ".section .eh_frame,\"dr\"\n"
    ".globl _qorWithinUnwindTables\n"
    "_qorWithinUnwindTables:\n"
    ".text\n");

extern const IMAGE_DOS_HEADER __ImageBase;  // of the linker
}

namespace __gnu_cxx {
/// Gives back what the run-time library keeps for exceptions without memory, 70 KB for each time
/// that the DLL is loaded.
void __freeres();
}  // namespace __gnu_cxx

namespace {

/// Where the section that holds an address of this image begins; null if there is none.
char* beginOfSectionWith(const char* address) {
    auto* const image = reinterpret_cast<const char*>(&__ImageBase);
    const auto* const head =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(image + __ImageBase.e_lfanew);
    const IMAGE_SECTION_HEADER* const sections = IMAGE_FIRST_SECTION(head);
    const auto offset = static_cast<DWORD>(address - image);
    for (WORD i = 0; i < head->FileHeader.NumberOfSections; ++i) {
        const DWORD begin = sections[i].VirtualAddress;
        if (offset >= begin && offset < begin + sections[i].Misc.VirtualSize)
            return const_cast<char*>(image) + begin;
    }
    return nullptr;
}

class OwnUnwinding {
public:
    OwnUnwinding() {
        dwarf_eh_bases bases = {};
        void* const here = reinterpret_cast<void*>(&beginOfSectionWith);
        if (_Unwind_Find_FDE(here, &bases) != nullptr) return;
        tables_ = beginOfSectionWith(qorWithinUnwindTables);
        if (tables_ != nullptr) __register_frame(tables_);
    }
    ~OwnUnwinding() {
        if (tables_ != nullptr) __deregister_frame(tables_);
        __gnu_cxx::__freeres();
    }
    OwnUnwinding(const OwnUnwinding&) = delete;
    OwnUnwinding& operator=(const OwnUnwinding&) = delete;

private:
    char* tables_ = nullptr;
};

/// Before all other static objects, and behind them at the end.
constexpr int first = 101;
__attribute__((init_priority(first))) OwnUnwinding ownUnwinding;

}  // namespace
