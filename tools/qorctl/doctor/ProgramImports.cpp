#include "doctor/ProgramImports.h"

#include <windows.h>

#include <algorithm>
#include <fstream>

#include "Spelling.h"

namespace qorctl::doctor {
namespace {

constexpr std::size_t maxSections = 96;  // more the system does not load
constexpr std::size_t maxImports = 4096;
constexpr std::size_t maxNameChars = 260;
constexpr DWORD isIntermediateOnly = 1;  // flags of a .NET program
constexpr DWORD is32BitRequired = 2;

/// A program in a file, piece by piece: some hosts have 80 MB.
class Image {
public:
    explicit Image(const std::string& path) : file_(path, std::ios::binary) {
        IMAGE_DOS_HEADER dos = {};
        if (!readAt(0, dos) || dos.e_magic != IMAGE_DOS_SIGNATURE || dos.e_lfanew < 0) return;
        const auto start = static_cast<std::size_t>(dos.e_lfanew);
        if (!readAt(start, head_) || head_.Signature != IMAGE_NT_SIGNATURE ||
            head_.OptionalHeader.Magic != IMAGE_NT_OPTIONAL_HDR32_MAGIC) {
            head_ = {};
            return;
        }
        readSections(start + offsetof(IMAGE_NT_HEADERS32, OptionalHeader) +
                     head_.FileHeader.SizeOfOptionalHeader);
    }

    /// Where the directory of that number would lie in memory; 0: there is none.
    DWORD directory(unsigned number) const {
        const auto& optional = head_.OptionalHeader;
        return number < std::min<DWORD>(optional.NumberOfRvaAndSizes,
                                        IMAGE_NUMBEROF_DIRECTORY_ENTRIES)
                   ? optional.DataDirectory[number].VirtualAddress
                   : 0;
    }

    /// What lies at an address in memory; false if the file does not have it.
    template <class Value>
    bool readLoaded(DWORD address, Value& value) {
        const IMAGE_SECTION_HEADER* const section = sectionOf(address);
        return section != nullptr && readAt(placeOf(*section, address), value);
    }
    std::string textLoaded(DWORD address) {
        const IMAGE_SECTION_HEADER* const section = sectionOf(address);
        if (section == nullptr || !seek(placeOf(*section, address))) return {};
        std::string text(maxNameChars, '\0');
        file_.read(text.data(), static_cast<std::streamsize>(text.size()));
        return text.substr(0, text.find('\0'));
    }

private:
    void readSections(std::size_t place) {
        const std::size_t count =
            std::min<std::size_t>(head_.FileHeader.NumberOfSections, maxSections);
        for (IMAGE_SECTION_HEADER section = {}; sections_.size() < count && readAt(place, section);
             place += sizeof section)
            sections_.push_back(section);
    }
    const IMAGE_SECTION_HEADER* sectionOf(DWORD address) const {
        const auto found =
            std::find_if(sections_.begin(), sections_.end(), [&](const IMAGE_SECTION_HEADER& one) {
                return address >= one.VirtualAddress &&
                       address - one.VirtualAddress < one.SizeOfRawData;
            });
        return found == sections_.end() ? nullptr : &*found;
    }
    static std::size_t placeOf(const IMAGE_SECTION_HEADER& section, DWORD address) {
        return std::size_t{section.PointerToRawData} + (address - section.VirtualAddress);
    }
    bool seek(std::size_t place) {
        file_.clear();
        return static_cast<bool>(file_.seekg(static_cast<std::streamoff>(place)));
    }
    template <class Value>
    bool readAt(std::size_t place, Value& value) {
        return seek(place) && file_.read(reinterpret_cast<char*>(&value), sizeof value);
    }

    std::ifstream file_;
    IMAGE_NT_HEADERS32 head_ = {};
    std::vector<IMAGE_SECTION_HEADER> sections_;
};

std::vector<std::string> importsOf(Image& image) {
    std::vector<std::string> names;
    DWORD address = image.directory(IMAGE_DIRECTORY_ENTRY_IMPORT);
    IMAGE_IMPORT_DESCRIPTOR entry = {};
    for (; address != 0 && names.size() < maxImports && image.readLoaded(address, entry) &&
           entry.Name != 0;
         address += sizeof entry)
        names.push_back(image.textLoaded(entry.Name));
    return names;
}

bool runsOnAnyProcessor(Image& image) {
    const DWORD address = image.directory(IMAGE_DIRECTORY_ENTRY_COM_DESCRIPTOR);
    IMAGE_COR20_HEADER head = {};
    return address != 0 && image.readLoaded(address, head) &&
           (head.Flags & (isIntermediateOnly | is32BitRequired)) == isIntermediateOnly;
}

}  // namespace

bool ProgramImports::has(const std::string& dll) const {
    return std::any_of(dlls.begin(), dlls.end(),
                       [&](const std::string& one) { return isSameName(one, dll); });
}

ProgramImports ProgramImports::read(const std::string& path) {
    Image image(path);
    return {importsOf(image), runsOnAnyProcessor(image)};
}

}  // namespace qorctl::doctor
