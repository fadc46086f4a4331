// What the library's DLL hands out: the facade, and what the templates of its headers call.

#include <gmock/gmock.h>
#include <windows.h>

#include <string>
#include <vector>

#include "QorControlFacade.h"

using testing::AnyOf;
using testing::Each;
using testing::Eq;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

std::vector<std::string> exportedNames() {
    const auto* module = reinterpret_cast<const char*>(GetModuleHandleA("QorControlFacade.dll"));
    std::vector<std::string> names;
    if (module == nullptr) return names;
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
    const auto* head = reinterpret_cast<const IMAGE_NT_HEADERS*>(module + dos->e_lfanew);
    const auto& entry = head->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const auto* table =
        reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(module + entry.VirtualAddress);
    const auto* offsets = reinterpret_cast<const DWORD*>(module + table->AddressOfNames);
    for (DWORD i = 0; i < table->NumberOfNames; ++i) names.emplace_back(module + offsets[i]);
    return names;
}

TEST(Exports, AreTheFacadeAndWhatItsQueuesNeed) {
    // The library must be loaded.
    EXPECT_EQ(QorControlFacade::getEdcRamSegmentName(), "WorkingPage");
    const std::vector<std::string> names = exportedNames();
    EXPECT_THAT(names, testing::Contains(Eq("_ZN6common7sleepMsEj")));
    EXPECT_THAT(names, Each(AnyOf(HasSubstr("16QorControlFacade"), StartsWith("_ZN6common4Lock"),
                                  StartsWith("_ZN6common5Event"), StartsWith("_ZNK6common5Event"),
                                  Eq("_ZN6common7sleepMsEj"))));
}

TEST(Exports, NothingReplacesTheClock) {
    EXPECT_THAT(exportedNames(), Each(Not(HasSubstr("Clock"))));
    EXPECT_THAT(exportedNames(), Each(Not(HasSubstr("tickCount"))));
}

}  // namespace
