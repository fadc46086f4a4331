#include <gtest/gtest.h>

#include "client/ClientExternalOperating.h"
#include "client/ProcessStarter.h"
#include "client/SystemMessageBox.h"
#include "framework/Application.h"
#include "support/TcpBytes.h"
#include "WindowPeer.h"
#include "WindowTestTransport.h"
#include "WindowWaiting.h"

namespace {

using tcp::record;
using tcp::word;
using tcp::wordAt;

constexpr int textControl = 65535;
constexpr std::uint32_t requestId = 0xABCD;

std::string counted(const std::string& text) {
    return word(static_cast<std::uint32_t>(text.size())) + text;
}

/// What the operator sees, and the owner of it.
struct SeenBox {
    HWND owner = nullptr;
    std::string text;
    bool hasYesAndNo = false;
    bool hasOk = false;
    bool qorWasFree = false;  ///< QOR's sending call had returned while the box was open
};

/// The client over window messages, a server that asks, and an operator on a thread of his own.
class WindowMessageBox : public testing::Test {
protected:
    const std::string title = uniqueTitle("client");
    const std::string serverTitle = uniqueTitle("server");
    const std::string caption = uniqueTitle("question");
    peer::WindowThread server{serverTitle};
    ClientExternalOperating client{
        ClientSettings(),
        [this](ICommandReceiver& its) {
            return std::make_unique<ExternalCommandFactory>(title, serverTitle, its);
        },
        std::make_unique<ProcessStarter>(), std::make_unique<SystemMessageBox>()};
    std::promise<int> asked;
    std::future<int> qorsResult = asked.get_future();

    /// The server asks "text" in a box of this style; the operator looks and presses a button.
    SeenBox ask(const std::string& text, std::uint32_t style, int button) {
        const std::string question =
            record(10, requestId, counted(caption) + counted(text) + word(style) + word(0));
        server.later([this, question] {
            asked.set_value(
                peer::send(FindWindowA(nullptr, title.c_str()), question, SMTO_BLOCK, 20000));
        });
        return pumpDuring([&] { return lookAndPress(button); });
    }
    bool choiceArrives() {
        return pumpUntil([this] { return !server.received().empty(); });
    }

private:
    SeenBox lookAndPress(int button) {
        HWND box = nullptr;
        for (int i = 0; i < 1000 && box == nullptr; ++i, Sleep(10))
            box = FindWindowA("#32770", caption.c_str());
        SeenBox seen;
        if (box == nullptr) return seen;
        char text[200] = "";
        GetDlgItemTextA(box, textControl, text, sizeof text);
        seen.text = text;
        seen.owner = GetWindow(box, GW_OWNER);
        seen.hasYesAndNo = GetDlgItem(box, IDYES) != nullptr && GetDlgItem(box, IDNO) != nullptr;
        seen.hasOk = GetDlgItem(box, IDOK) != nullptr;
        seen.qorWasFree =
            qorsResult.wait_for(std::chrono::seconds(5)) == std::future_status::ready &&
            IsWindow(box);
        PostMessageA(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
        return seen;
    }
};

TEST_F(WindowMessageBox, NoGoesBackAsARequestOfItsOwnWithoutTexts) {
    const SeenBox box = ask("Go on with 100%s?", MB_YESNO, IDNO);

    EXPECT_EQ("Go on with 100%s?", box.text);
    EXPECT_TRUE(box.hasYesAndNo);
    EXPECT_FALSE(box.hasOk);
    ASSERT_TRUE(choiceArrives());
    const std::string choice = server.received()[0].bytes;
    const std::uint32_t itsId = wordAt(choice, 4);
    EXPECT_EQ(record(10, itsId, word(0) + word(0) + word(0) + word(IDNO)), choice);
    EXPECT_NE(requestId, itsId);
}

TEST_F(WindowMessageBox, TheServerIsReleasedWithOneWhileTheBoxIsOpen) {
    const SeenBox box = ask("?", MB_OK, IDOK);

    EXPECT_TRUE(box.qorWasFree);
    EXPECT_EQ(1, qorsResult.get());
    EXPECT_TRUE(box.hasOk);
    EXPECT_FALSE(box.hasYesAndNo);
    EXPECT_TRUE(choiceArrives());
}

TEST_F(WindowMessageBox, TheMainWindowOfTheThreadsApplicationOwnsTheBox) {
    const peer::Window main(uniqueTitle("main"), {});
    CWnd window;
    window.m_hWnd = main.handle();
    CWinThread thread;
    thread.m_pMainWnd = &window;
    AfxSetThread(&thread);

    const SeenBox box = ask("?", MB_YESNO, IDYES);

    AfxSetThread(nullptr);
    window.m_hWnd = nullptr;  // not its to destroy
    EXPECT_EQ(main.handle(), box.owner);
    EXPECT_TRUE(choiceArrives());
}

TEST_F(WindowMessageBox, WithoutAnApplicationTheForegroundWindowOwnsTheBox) {
    HWND const foreground = GetForegroundWindow();

    const SeenBox box = ask("?", MB_YESNO, IDYES);

    EXPECT_EQ(foreground == GetDesktopWindow() ? nullptr : foreground, box.owner);
    EXPECT_TRUE(choiceArrives());
}

TEST_F(WindowMessageBox, AChoiceThatCannotBeDeliveredIsDroppedAndTheClientLivesOn) {
    server.onMessage([](const peer::Message&) { return LRESULT{0}; });

    EXPECT_EQ("?", ask("?", MB_OK, IDOK).text);

    EXPECT_TRUE(choiceArrives());
    server.onMessage({});
    EXPECT_TRUE(client.ping(2000));
}

}  // namespace
