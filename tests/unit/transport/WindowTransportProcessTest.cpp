#include <gtest/gtest.h>

#include "support/TcpBytes.h"
#include "support/TcpProcessFigures.h"
#include "WindowPeer.h"
#include "WindowTestTransport.h"
#include "WindowWaiting.h"

namespace {

/// The second process; it ends with this object at the latest.
class PeerProcess {
public:
    explicit PeerProcess(const std::string& arguments) {
        char path[MAX_PATH] = "";
        GetModuleFileNameA(nullptr, path, sizeof path);
        const std::string own(path);
        std::string command = "\"" + own.substr(0, own.find_last_of('\\') + 1) +
                              "window_transport_peer.exe\" " + arguments;
        STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        if (!CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                            &startup, &process_))
            ADD_FAILURE() << "no process: " << command << ", " << GetLastError();
    }
    ~PeerProcess() {
        kill();
        CloseHandle(process_.hThread);
        CloseHandle(process_.hProcess);
    }
    PeerProcess(const PeerProcess&) = delete;
    PeerProcess& operator=(const PeerProcess&) = delete;

    void kill() {
        TerminateProcess(process_.hProcess, 99);
        WaitForSingleObject(process_.hProcess, 5000);
    }
    /// Takes messages until it ends; its exit code.
    DWORD awaitEnd(DWORD withinMs) {
        pumpUntil([&] { return WaitForSingleObject(process_.hProcess, 0) == WAIT_OBJECT_0; },
                  withinMs);
        DWORD code = STILL_ACTIVE;
        GetExitCodeProcess(process_.hProcess, &code);
        return code;
    }

private:
    PROCESS_INFORMATION process_ = {};
};

bool windowAppears(const std::string& title) {
    return pumpUntil([&] { return FindWindowA(nullptr, title.c_str()) != nullptr; }, 20000);
}

std::string quoted(const std::string& text) {
    return " \"" + text + "\"";
}

class WindowTransportProcess : public testing::Test {
protected:
    const std::string title = uniqueTitle("client");
    const std::string serverTitle = uniqueTitle("server");
    WindowTestTransport transport{title, serverTitle, std::make_unique<WindowPlatform>()};
};

class WindowTransportAnswer : public WindowTransportProcess,
                              public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Sent, WindowTransportAnswer,
                         testing::Values("inside", "released", "later"),
                         [](const auto& style) { return std::string(style.param); });

TEST_P(WindowTransportAnswer, OfAnotherProcessReachesItsRequest) {
    const PeerProcess server(std::string("answer ") + GetParam() + quoted(serverTitle) +
                             quoted(title));
    ASSERT_TRUE(windowAppears(serverTitle));
    for (std::size_t round = 1; round <= 5; ++round) {
        auto command = std::make_unique<CommandEcuToolRoutine>();
        const std::uint32_t requestId = command->requestId();

        EXPECT_TRUE(transport.send(std::move(command), 5000));

        ASSERT_TRUE(pumpUntil([&] { return transport.seen.size() == round; }));
        EXPECT_EQ(requestId, transport.seen.back().requestId);
        EXPECT_TRUE(transport.seen.back().isReply);
    }
}

TEST_F(WindowTransportProcess, AServerThatDiesInMidSendEndsTheSendLongBeforeItsTimeOut) {
    PeerProcess server("hang" + quoted(serverTitle));
    ASSERT_TRUE(windowAppears(serverTitle));
    std::thread killer([&] {
        const std::string busy = serverTitle + " busy";
        for (int i = 0; i < 1000 && FindWindowA(nullptr, busy.c_str()) == nullptr; ++i) Sleep(10);
        server.kill();
    });
    const Elapsed elapsed;

    EXPECT_FALSE(transport.sendRoutine(30000));

    killer.join();
    EXPECT_LT(elapsed.ms(), 20000u);
    EXPECT_FALSE(transport.sendRoutine(5000)) << "its window is gone";
}

TEST_F(WindowTransportProcess, AServerThatHangsIsGivenUpAfterTheTimeOut) {
    const PeerProcess server("hang" + quoted(serverTitle));
    ASSERT_TRUE(windowAppears(serverTitle));
    const Elapsed elapsed;

    EXPECT_FALSE(transport.sendRoutine(300));

    EXPECT_GE(elapsed.ms(), 280u);
    EXPECT_LT(elapsed.ms(), 4000u);
}

TEST_F(WindowTransportProcess, ASenderThatDiesWhileItsMessageIsHandledHurtsNothing) {
    PeerProcess asker("ask" + quoted(title));
    bool replied = true;
    transport.handler = [&](auto&, auto& replyer) {
        asker.kill();
        replied = replyer.reply(std::make_unique<CommandEcuToolRoutine>(), 1000);
        return true;
    };
    ASSERT_TRUE(pumpUntil([&] { return !transport.seen.empty(); }, 20000));

    EXPECT_FALSE(replied);
    const peer::WindowThread server(serverTitle);
    EXPECT_TRUE(transport.sendRoutine(5000));
}

TEST_F(WindowTransportProcess, TenThousandRandomMessagesLeaveHandlesMemoryAndAnswersAsTheyWere) {
    transport.seen.reserve(20000);  // the test's own memory
    const auto flood = [&](const char* seedAndCount) {
        PeerProcess sender("flood" + quoted(title) + seedAndCount);
        return sender.awaitEnd(100000);
    };
    EXPECT_EQ(0u, flood(" 1 500"));
    const std::uintptr_t handles = tcp::nextFreeHandle();
    const std::size_t memory = tcp::memoryBytes();

    EXPECT_EQ(0u, flood(" 2 10000")) << "messages without the expected result";

    EXPECT_EQ(handles, tcp::nextFreeHandle());
    EXPECT_LT(tcp::memoryBytes(), memory + 500000);
    EXPECT_GT(transport.seen.size(), 3000u) << "every third one is a record";
    const peer::WindowThread server(serverTitle);
    EXPECT_TRUE(transport.sendRoutine(5000));
}

}  // namespace
