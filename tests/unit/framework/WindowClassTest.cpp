#include <gtest/gtest.h>

#include <string>

#include "framework/Application.h"
#include "framework/Window.h"

namespace {

bool isRegistered(HINSTANCE instance, const std::string& name) {
    WNDCLASSA found;
    return GetClassInfoA(instance, name.c_str(), &found) != 0;
}

TEST(WindowClass, EqualPropertiesGiveTheSameClass) {
    const char* const first = AfxRegisterWndClass(0);
    ASSERT_NE(nullptr, first);

    EXPECT_STREQ(first, AfxRegisterWndClass(0));
    EXPECT_TRUE(isRegistered(AfxThisModule(), first));
}

TEST(WindowClass, EachSetOfPropertiesHasAClassOfItsOwn) {
    HCURSOR const cursor = LoadCursorA(nullptr, IDC_ARROW);
    HBRUSH const brush = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    const std::string plain = AfxRegisterWndClass(0);
    const std::string dressed = AfxRegisterWndClass(CS_DBLCLKS, cursor, brush);

    EXPECT_NE(plain, dressed);
    WNDCLASSA found = {};
    ASSERT_TRUE(GetClassInfoA(AfxThisModule(), dressed.c_str(), &found));
    EXPECT_EQ(static_cast<UINT>(CS_DBLCLKS), found.style);
    EXPECT_EQ(cursor, found.hCursor);
    EXPECT_EQ(brush, found.hbrBackground);
    ASSERT_TRUE(GetClassInfoA(AfxThisModule(), plain.c_str(), &found));
    EXPECT_EQ(0u, found.style);
    EXPECT_EQ(nullptr, found.hCursor);
}

TEST(WindowClass, ARefusedRegistrationGivesNoName) {
    // Somebody else has the name that the class of style 2 would get.
    std::string taken = AfxRegisterWndClass(0);
    taken.replace(taken.find(":0:"), 3, ":2:");
    WNDCLASSA foreign = {};
    foreign.lpfnWndProc = DefWindowProcA;
    foreign.hInstance = AfxThisModule();
    foreign.lpszClassName = taken.c_str();
    ASSERT_NE(0, RegisterClassA(&foreign));

    EXPECT_EQ(nullptr, AfxRegisterWndClass(2));

    UnregisterClassA(taken.c_str(), AfxThisModule());
    EXPECT_EQ(taken, AfxRegisterWndClass(2)) << "a refusal is not kept";
}

/// Loads the library, makes a window in it and unloads it. Afterwards its class must be gone: the
/// next load may lie elsewhere, and the class would still name the old procedure.
void useLibraryOnce() {
    HMODULE const library = LoadLibraryA("framework_class_probe.dll");
    ASSERT_NE(nullptr, library) << "error " << GetLastError();
    using MakeWindow = HINSTANCE (*)(char*, unsigned);
    const auto make = reinterpret_cast<MakeWindow>(
        reinterpret_cast<void*>(GetProcAddress(library, "makeWindowInLibrary")));
    ASSERT_NE(nullptr, make);
    char name[200] = "";
    HINSTANCE const instance = make(name, sizeof name);
    ASSERT_EQ(library, instance) << "the class belongs to the library, not to the program";
    EXPECT_TRUE(isRegistered(instance, name));

    ASSERT_TRUE(FreeLibrary(library));

    ASSERT_EQ(nullptr, GetModuleHandleA("framework_class_probe.dll"));
    EXPECT_FALSE(isRegistered(instance, name));
}

TEST(WindowClass, TheClassesOfALibraryGoWithIt) {
    useLibraryOnce();
}

TEST(WindowClass, ALibraryThatWasUnloadedCanMakeItsWindowsAgain) {
    for (int round = 0; round < 5; ++round) useLibraryOnce();
}

}  // namespace
