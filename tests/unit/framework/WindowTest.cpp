#include "framework/Window.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

#include "SocketTestSupport.h"
#include "support/TcpProcessFigures.h"

namespace {

/// A title that no other program of the desktop bears.
std::string uniqueTitle(const char* name) {
    return std::string(name) + " " + std::to_string(GetCurrentProcessId());
}

class PlainWindow : public CWnd {
public:
    BOOL create(const std::string& title) {
        return CreateEx(0, AfxRegisterWndClass(0), title.c_str(), 0, 0, 0, 0, 0, nullptr, nullptr);
    }
};

class CopyDataWindow : public PlainWindow {
public:
    BOOL OnCopyData(CWnd* sender, COPYDATASTRUCT* data) {
        from = sender;
        thread = GetCurrentThreadId();
        tag = data->dwData;
        text.assign(static_cast<const char*>(data->lpData), data->cbData);
        return accepts;
    }

    BOOL accepts = TRUE;
    CWnd* from = nullptr;
    DWORD thread = 0;
    ULONG_PTR tag = 0;
    std::string text;

    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(CopyDataWindow, PlainWindow)
ON_WM_COPYDATA()
END_MESSAGE_MAP()

/// Handles one message more than its base class.
class DerivedWindow : public CopyDataWindow {
public:
    unsigned userMessages = 0;

    DECLARE_MESSAGE_MAP()
};

#define ON_TEST_USER_MESSAGE()                                               \
    {WM_USER, [](CWnd& window, WPARAM wParam, LPARAM lParam) -> LRESULT {    \
         ++static_cast<ThisClass&>(window).userMessages;                     \
         return static_cast<LRESULT>(wParam) + static_cast<LRESULT>(lParam); \
     }},

BEGIN_MESSAGE_MAP(DerivedWindow, CopyDataWindow)
ON_TEST_USER_MESSAGE()
END_MESSAGE_MAP()

LRESULT sendCopyData(HWND to, const std::string& text, ULONG_PTR tag, HWND from = nullptr) {
    COPYDATASTRUCT data = {tag, static_cast<DWORD>(text.size()), const_cast<char*>(text.data())};
    return SendMessageA(to, WM_COPYDATA, reinterpret_cast<WPARAM>(from),
                        reinterpret_cast<LPARAM>(&data));
}

TEST(Window, ACreatedWindowIsATopLevelOneThatIsFoundByItsTitle) {
    PlainWindow window;
    const std::string title = uniqueTitle("found");

    ASSERT_TRUE(window.create(title));

    EXPECT_NE(nullptr, window.m_hWnd);
    EXPECT_EQ(window.m_hWnd, FindWindowA(nullptr, title.c_str()));
    EXPECT_FALSE(IsWindowVisible(window.m_hWnd));
}

TEST(Window, CreationFailsForAClassThatIsNotRegistered) {
    CWnd window;
    SetLastError(0);

    EXPECT_FALSE(window.CreateEx(0, "no such class", "x", 0, 0, 0, 0, 0, nullptr, nullptr));

    EXPECT_NE(0u, GetLastError());
    EXPECT_EQ(nullptr, window.m_hWnd);
}

TEST(Window, DestroyingTheWindowEndsItAndForgetsTheHandle) {
    PlainWindow window;
    ASSERT_TRUE(window.create(uniqueTitle("destroyed")));
    HWND const handle = window.m_hWnd;

    EXPECT_TRUE(window.DestroyWindow());

    EXPECT_EQ(nullptr, window.m_hWnd);
    EXPECT_FALSE(IsWindow(handle));
    EXPECT_FALSE(window.DestroyWindow()) << "there is none any more";
}

TEST(Window, DestroyingTheObjectDestroysTheWindow) {
    auto window = std::make_unique<CopyDataWindow>();
    ASSERT_TRUE(window->create(uniqueTitle("object")));
    HWND const handle = window->m_hWnd;

    window.reset();

    EXPECT_FALSE(IsWindow(handle));
}

TEST(Window, AWindowEndedByTheSystemIsForgottenByItsObject) {
    PlainWindow window;
    ASSERT_TRUE(window.create(uniqueTitle("system")));

    ::DestroyWindow(window.m_hWnd);

    EXPECT_EQ(nullptr, window.m_hWnd);
}

TEST(Window, AnObjectCanHaveAWindowAgain) {
    CopyDataWindow window;
    ASSERT_TRUE(window.create(uniqueTitle("first")));
    window.DestroyWindow();

    ASSERT_TRUE(window.create(uniqueTitle("second")));

    EXPECT_EQ(TRUE, sendCopyData(window.m_hWnd, "again", 1));
    EXPECT_EQ("again", window.text);
}

TEST(Window, CopyDataGoesToItsHandlerAndTheResultBack) {
    CopyDataWindow window;
    ASSERT_TRUE(window.create(uniqueTitle("copy")));

    EXPECT_EQ(TRUE, sendCopyData(window.m_hWnd, std::string("a\0b", 3), 3084));
    EXPECT_EQ(std::string("a\0b", 3), window.text);
    EXPECT_EQ(3084u, window.tag);

    window.accepts = FALSE;
    EXPECT_EQ(FALSE, sendCopyData(window.m_hWnd, "", 3084));
}

TEST(Window, AMessageWithoutAnEntryGoesToTheSystem) {
    PlainWindow window;
    const std::string title = uniqueTitle("default");
    ASSERT_TRUE(window.create(title));

    EXPECT_EQ(static_cast<LRESULT>(title.size()),
              SendMessageA(window.m_hWnd, WM_GETTEXTLENGTH, 0, 0));
    EXPECT_EQ(FALSE, sendCopyData(window.m_hWnd, "nobody", 1));
}

TEST(Window, TheMapOfTheBaseClassIsAskedToo) {
    DerivedWindow window;
    ASSERT_TRUE(window.create(uniqueTitle("derived")));

    EXPECT_EQ(12, SendMessageA(window.m_hWnd, WM_USER, 5, 7));
    EXPECT_EQ(1u, window.userMessages);
    EXPECT_EQ(TRUE, sendCopyData(window.m_hWnd, "base", 1));
    EXPECT_EQ("base", window.text);
}

TEST(Window, TwoWindowsOfOneClassAreToldApart) {
    CopyDataWindow first;
    CopyDataWindow second;
    ASSERT_TRUE(first.create(uniqueTitle("one")));
    ASSERT_TRUE(second.create(uniqueTitle("two")));

    sendCopyData(first.m_hWnd, "1", 1);
    sendCopyData(second.m_hWnd, "2", 1);

    EXPECT_EQ("1", first.text);
    EXPECT_EQ("2", second.text);
}

TEST(Window, TheSenderOfCopyDataIsNamedWhereItIsAWindowOfTheLibrary) {
    CopyDataWindow window;
    PlainWindow sender;
    ASSERT_TRUE(window.create(uniqueTitle("to")));
    ASSERT_TRUE(sender.create(uniqueTitle("from")));

    sendCopyData(window.m_hWnd, "", 1, sender.m_hWnd);
    EXPECT_EQ(&sender, window.from);
    sendCopyData(window.m_hWnd, "", 1, GetDesktopWindow());
    EXPECT_EQ(nullptr, window.from);
    sendCopyData(window.m_hWnd, "", 1, nullptr);
    EXPECT_EQ(nullptr, window.from);
}

TEST(Window, CopyDataFromAnotherThreadIsHandledOnTheOwnThread) {
    CopyDataWindow window;
    ASSERT_TRUE(window.create(uniqueTitle("thread")));
    HWND const handle = window.m_hWnd;
    LRESULT result = FALSE;
    std::thread sender([&] { result = sendCopyData(handle, "from a thread", 1); });

    const bool handled = pumpUntil([&] { return window.thread != 0; });
    if (!handled) window.DestroyWindow();  // releases the sender
    sender.join();

    EXPECT_EQ(TRUE, result);
    EXPECT_EQ("from a thread", window.text);
    EXPECT_EQ(GetCurrentThreadId(), window.thread);
}

/// The folder of this program.
std::string ownFolder() {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, sizeof path);
    return std::string(path).substr(0, std::string(path).find_last_of('\\') + 1);
}

TEST(Window, CopyDataFromAnotherProcessIsHandled) {
    CopyDataWindow window;
    const std::string title = uniqueTitle("process");
    ASSERT_TRUE(window.create(title));
    std::string command =
        "\"" + ownFolder() + "framework_copydata_sender.exe\" \"" + title + "\" \"from afar\"";
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    ASSERT_TRUE(CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &process));

    const bool ended =
        pumpUntil([&] { return WaitForSingleObject(process.hProcess, 0) == WAIT_OBJECT_0; }, 20000);
    DWORD exitCode = 99;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);

    EXPECT_TRUE(ended);
    EXPECT_EQ(1u, exitCode) << "the sender tells the result";
    EXPECT_EQ("from afar", window.text);
    EXPECT_EQ(77u, window.tag);
}

TEST(Window, AModalStateDisablesTheWindowUntilItEnds) {
    PlainWindow window;
    ASSERT_TRUE(window.create(uniqueTitle("modal")));
    EXPECT_TRUE(IsWindowEnabled(window.m_hWnd));

    window.BeginModalState();
    EXPECT_FALSE(IsWindowEnabled(window.m_hWnd));
    window.EndModalState();
    EXPECT_TRUE(IsWindowEnabled(window.m_hWnd));
}

TEST(Window, ManyWindowsLeaveNothingBehind) {
    const auto rounds = [](int count) {
        for (int round = 0; round < count; ++round) {
            CopyDataWindow window;
            ASSERT_TRUE(window.create(uniqueTitle("many")));
        }
    };
    rounds(5);
    const std::uintptr_t handles = tcp::nextFreeHandle();
    const std::size_t memory = tcp::memoryBytes();

    rounds(300);

    EXPECT_EQ(handles, tcp::nextFreeHandle());
    EXPECT_LT(tcp::memoryBytes(), memory + 500000);
    EXPECT_EQ(nullptr, FindWindowA(nullptr, uniqueTitle("many").c_str()));
}

}  // namespace
