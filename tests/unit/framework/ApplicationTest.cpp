#include <gtest/gtest.h>

#include <thread>

#include "framework/Application.h"
#include "framework/Window.h"

namespace {

/// Leaves the module state as it was found.
class Application : public testing::Test {
protected:
    ~Application() override {
        AfxGetModuleState()->m_hCurrentInstanceHandle = instance_;
        AfxGetModuleState()->m_hCurrentResourceHandle = resource_;
        AfxSetThread(nullptr);
    }

private:
    const HINSTANCE instance_ = AfxGetModuleState()->m_hCurrentInstanceHandle;
    const HINSTANCE resource_ = AfxGetModuleState()->m_hCurrentResourceHandle;
};

TEST_F(Application, ThisModuleIsTheOneThatTheCodeIsLinkedInto) {
    EXPECT_EQ(GetModuleHandleA(nullptr), AfxThisModule());
}

TEST_F(Application, InitialisationNotesTheInstance) {
    char noArguments[] = "";

    EXPECT_TRUE(AfxWinInit(AfxThisModule(), nullptr, noArguments, 0));

    EXPECT_EQ(AfxThisModule(), AfxGetModuleState()->m_hCurrentInstanceHandle);
    EXPECT_EQ(AfxThisModule(), AfxGetModuleState()->m_hCurrentResourceHandle);
}

TEST_F(Application, InitialisationWithoutAnInstanceIsRefusedAndChangesNothing) {
    char noArguments[] = "";
    AfxGetModuleState()->m_hCurrentInstanceHandle = AfxThisModule();

    EXPECT_FALSE(AfxWinInit(nullptr, nullptr, noArguments, 0));

    EXPECT_EQ(AfxThisModule(), AfxGetModuleState()->m_hCurrentInstanceHandle);
}

TEST_F(Application, ThereIsOneModuleStateForAllThreads) {
    AFX_MODULE_STATE* ofOther = nullptr;
    std::thread([&] { ofOther = AfxGetModuleState(); }).join();

    EXPECT_EQ(AfxGetModuleState(), ofOther);
}

TEST_F(Application, AModuleWithoutAManifestGetsNoActivationContext) {
    AFX_MODULE_STATE state;
    state.m_hCurrentInstanceHandle = GetModuleHandleA("kernel32.dll");

    state.CreateActivationContext();

    EXPECT_EQ(INVALID_HANDLE_VALUE, state.m_hActCtx);
}

TEST_F(Application, AnActivationContextIsMadeOnceOnly) {
    HANDLE const mark = reinterpret_cast<HANDLE>(0x1234);
    AFX_MODULE_STATE state;
    state.m_hActCtx = mark;

    state.CreateActivationContext();

    EXPECT_EQ(mark, state.m_hActCtx);
    state.m_hActCtx = INVALID_HANDLE_VALUE;
}

TEST_F(Application, AThreadIsNoUserInterfaceThreadUntilItIsMadeOne) {
    CWnd window;
    CWinThread thread;
    thread.m_pMainWnd = &window;
    EXPECT_EQ(nullptr, AfxGetThread());

    AfxSetThread(&thread);

    ASSERT_EQ(&thread, AfxGetThread());
    EXPECT_EQ(&window, AfxGetThread()->m_pMainWnd);
    CWinThread* ofOther = &thread;
    std::thread([&] { ofOther = AfxGetThread(); }).join();
    EXPECT_EQ(nullptr, ofOther) << "the other thread is none";

    AfxSetThread(nullptr);
    EXPECT_EQ(nullptr, AfxGetThread());
}

}  // namespace
