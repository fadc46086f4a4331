#include <gmock/gmock.h>

#include "facade/QorControlFacade.h"
#include "support/RecordingEolLog.h"
#include "support/TcpProcessFigures.h"
#include "support/TempFolder.h"
#include "trace/Trace.h"

namespace {

using ::testing::Contains;
using ::testing::IsEmpty;

/// The agent thread as a facade starts it, on the system's clock. No QOR is there.
class AgentThread : public ::testing::Test {
protected:
    ~AgentThread() override {
        // So that the temporary folder can be deleted.
        tracelog::openTraceFile("c:\\no such folder\\x.log", "w");
    }

    std::unique_ptr<QorControlFacade> facadeWith(const std::string& settingsPath) {
        return std::make_unique<QorControlFacade>(settingsPath, &log, 0u,
                                                  folder.pathOf("host.exe"));
    }
    std::string settings(const std::string& lines) {
        return folder.write("qor.ini",
                            "[CommonSettings]\r\nUseTcp=true\r\nServerIp=127.0.0.1\r\n"
                            "TcpPort=1\r\n" +
                                lines);
    }
    std::vector<std::string> trace() { return linesOfFile(folder.pathOf("host.log")); }

    /// Until the trace has a line of this text, at most 20 s.
    bool isTraced(const std::string& text) { return awaitLineOf("host.log", text); }
    bool awaitLineOf(const std::string& file, const std::string& text) {
        for (int i = 0; i < 2000; ++i) {
            for (const std::string& line : linesOfFile(folder.pathOf(file)))
                if (line.find(text) != std::string::npos) return true;
            Sleep(10);
        }
        return false;
    }
    static bool endsSoon(const QorControlFacade& facade) {
        for (int i = 0; i < 1000; ++i) {
            if (!facade.connect({}, QorControlFacade::EcuConnect::Default, nullptr)) return true;
            Sleep(10);
        }
        return false;
    }

    TempFolder folder;
    RecordingEolLog log;
};

TEST_F(AgentThread, AMissingSettingsFileEndsTheThreadAndTheTraceSaysWhy) {
    const std::string path = folder.pathOf("missing.ini");
    const auto facade = facadeWith(path);
    EXPECT_TRUE(isTraced("File: " + path));
    EXPECT_THAT(trace(), Contains("3\tException when starting QOR Remote agent thread, Specified "
                                  "settings file for QOR 'external operation mode' is not valid."));
    EXPECT_THAT(trace(), Contains("File: " + path + "."));
    EXPECT_TRUE(endsSoon(*facade));
    std::vector<double> values;
    EXPECT_FALSE(facade->getParamData("Speed", values, 0xFFFFFFFFu));
    EXPECT_FALSE(facade->pingQor(0xFFFFFFFFu));
    EXPECT_FALSE(facade->isEcuOnline());
    facade->shutdown();
}

TEST_F(AgentThread, AQorThatCannotBeStartedEndsTheThreadAndTheTraceSaysWhy) {
    const auto facade = facadeWith(settings("QORexecutable=c:\\no such qor.exe\r\n"));
    EXPECT_TRUE(
        isTraced("3\tException when starting QOR Remote agent thread, Fail to launch QOR external "
                 "operating."));
    EXPECT_TRUE(endsSoon(*facade));
    EXPECT_EQ(facade->getQorExecutablePath(), "c:\\no such qor.exe");
    EXPECT_FALSE(facade->pingQor(100));
}

// The worker of the socket transport takes up to a second to end: seen alive behind the line, it
// proves the order. A busy machine may look too late, so a few looks are granted.
TEST_F(AgentThread, AFailureIsToldBeforeTheClientIsClearedUpAndOperationsFailFromThenOn) {
    const std::string path = settings("QORexecutable=c:\\no such qor.exe\r\n");
    const std::size_t threadsBefore = tcp::threadCount();
    bool isSeen = false;
    for (int look = 0; look < 5 && !isSeen; ++look) {
        const auto facade = std::make_unique<QorControlFacade>(
            path, &log, 0u, folder.pathOf("host" + std::to_string(look) + ".exe"));
        EXPECT_TRUE(awaitLineOf("host" + std::to_string(look) + ".log", "Fail to launch QOR"));
        const bool fails = !facade->connect({}, QorControlFacade::EcuConnect::Default, nullptr) &&
                           !facade->pingQor(100);
        isSeen = fails && tcp::threadCount() >= threadsBefore + 2;
    }
    EXPECT_TRUE(isSeen);
}

TEST_F(AgentThread, ThePathIsPublishedBeforeTheLaunchHasEnded) {
    const auto facade = facadeWith(settings("QORexecutable=c:\\no such qor.exe\r\n"));
    EXPECT_EQ(facade->getQorExecutablePath(), "c:\\no such qor.exe");
    for (const std::string& line : trace()) EXPECT_EQ(line.find("Exception"), std::string::npos);
}

TEST_F(AgentThread, WithoutAnExecutableTheThreadLivesAndTheOperationsFail) {
    const auto facade = facadeWith(settings(""));
    EXPECT_FALSE(facade->pingQor(200));
    EXPECT_TRUE(facade->connect({}, QorControlFacade::EcuConnect::Default, nullptr));
    EXPECT_FALSE(facade->isConnecting());
    EXPECT_FALSE(facade->isEcuOnline());
}

}  // namespace
