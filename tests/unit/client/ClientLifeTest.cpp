

#include "client/ProcessStarter.h"
#include "ClientFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

class ClientLife : public ClientTest {};

TEST_F(ClientLife, TheTransportIsGivenTheClientItself) {
    ICommandReceiver* given = nullptr;
    ClientExternalOperating made(
        ClientSettings(),
        [&](ICommandReceiver& client) {
            given = &client;
            EXPECT_THAT(client.prototypes(), SizeIs(12));  // filled before the transport reads it
            return qor.transport()(client);
        },
        processes.starter(), std::make_unique<FakeMessageBox>(pressButton));
    EXPECT_EQ(given, &made);
}

TEST_F(ClientLife, TheTransportEndsFirstAndThenTheClientSettlesFor50Ms) {
    client();
    ASSERT_TRUE(qor.isTransportAlive);
    clock.onSleep = [this](unsigned int ms) {
        qor.events.push_back("sleep " + std::to_string(ms));
        EXPECT_FALSE(qor.isTransportAlive);
    };
    destroyClient();
    EXPECT_THAT(qor.events, ElementsAre("transport ends", "sleep 50"));
}

/// A transport with a thread of its own: until that has ended, at its end at the latest, handlers
/// run.
class BusyTransport final : public IExternalCommandFactory {
public:
    explicit BusyTransport(std::function<void()> handler) : handler_(std::move(handler)) {}
    ~BusyTransport() override { BusyTransport::stop(); }

    bool stop() override {
        if (!std::exchange(hasEnded_, true)) handler_();
        return true;
    }
    bool send(std::unique_ptr<IExternalCommand>, unsigned int) override {
        ++sends;
        return true;
    }
    unsigned int defaultTimeout(unsigned int) const override { return 2000; }

    static inline int sends = 0;

private:
    const std::function<void()> handler_;
    bool hasEnded_ = false;
};

TEST_F(ClientLife, AHandlerThatStillRunsAtItsEndCanUseTheTransport) {
    BusyTransport::sends = 0;
    ClientExternalOperating* made = nullptr;
    auto ending = std::make_unique<ClientExternalOperating>(
        ClientSettings(),
        [&](ICommandReceiver&) {
            return std::make_unique<BusyTransport>([&made] { made->ping(0); });
        },
        processes.starter(), std::make_unique<FakeMessageBox>(pressButton));
    made = ending.get();
    ending.reset();
    EXPECT_EQ(BusyTransport::sends, 1);
}

TEST_F(ClientLife, APingGivesQorTheCallersTimeoutAndTakesTheResultOfTheSend) {
    EXPECT_TRUE(client().ping(0xFFFFFFFFu));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 0xFFFFFFFFu);
    qor.acknowledges = false;
    EXPECT_FALSE(client().ping(0));
    EXPECT_EQ(qor.sent().at(1).timeoutMs, 0u);
}

TEST_F(ClientLife, TheOptionsOfAShutdownAreTheBits4And2) {
    const bool options[][2] = {{false, false}, {false, true}, {true, false}, {true, true}};
    std::vector<std::uint32_t> flags;
    for (const auto& option : options) {
        EXPECT_TRUE(client().shutdown(option[0], option[1]));
        flags.push_back(qor.last<CommandShutdown>().flags);
        EXPECT_EQ(qor.sent().back().timeoutMs, 5000u);
    }
    EXPECT_THAT(flags, ElementsAre(0u, 2u, 4u, 6u));
    qor.acknowledges = false;
    EXPECT_FALSE(client().shutdown(true, true));
}

TEST_F(ClientLife, TheWholePathOfTheExecutableAndItsDirectoryAreKnownAtOnce) {
    settings("QORexecutable=d:\\tools\\qor\\q.exe\r\n");
    EXPECT_EQ(client().executablePath(), "d:\\tools\\qor\\q.exe");
    EXPECT_EQ(client().qorDirectory(), "d:\\tools\\qor\\");
    EXPECT_TRUE(qor.sent().empty());
}

TEST(SystemProcesses, AProgramThatDoesNotExistCannotBeStarted) {
    EXPECT_FALSE(ProcessStarter().start("c:\\no such program.exe", " x"));
    EXPECT_FALSE(ProcessStarter().start("", " x"));
}

TEST(SystemProcesses, AProgramIsStartedWithItsCommandLine) {
    const TempFolder folder;
    const std::string made = folder.pathOf("made");
    char shell[MAX_PATH] = "";
    GetSystemDirectoryA(shell, sizeof shell);
    ASSERT_TRUE(
        ProcessStarter().start(std::string(shell) + "\\cmd.exe", " /c mkdir \"" + made + "\""));
    for (int i = 0; i < 500 && !fileExists(made); ++i) Sleep(10);
    EXPECT_TRUE(fileExists(made));
}

}  // namespace
