#include "client/ClientSettings.h"

#include <gmock/gmock.h>

#include "support/TempFolder.h"

namespace {

class ClientSettingsFile : public ::testing::Test {
protected:
    std::string fileWith(const std::string& lines) {
        return folder_.write("qor.ini", "[CommonSettings]\r\n" + lines);
    }
    ClientSettings settingsOf(const std::string& lines) {
        return ClientSettings::read(fileWith(lines));
    }

    TempFolder folder_;
};

TEST_F(ClientSettingsFile, AllKeysAreRead) {
    const auto settings = settingsOf(
        "QORexecutable=bin\\q.exe\r\nUseTcp=true\r\nServerIp=10.0.0.7\r\nTcpPort=5555\r\n"
        "ServerPipeName=QOR window\r\nClientPipeName=Our window\r\n");
    EXPECT_EQ(settings.path, folder_.pathOf("qor.ini"));
    EXPECT_EQ(settings.executable, "bin\\q.exe");
    EXPECT_TRUE(settings.useTcp);
    EXPECT_EQ(settings.serverIp, "10.0.0.7");
    EXPECT_EQ(settings.tcpPort, 5555u);
    EXPECT_EQ(settings.serverPipeName, "QOR window");
    EXPECT_EQ(settings.clientPipeName, "Our window");
}

TEST_F(ClientSettingsFile, MissingKeysAreEmptyOrZeroAndTheFrameworkIsInitialised) {
    const auto settings = settingsOf("");
    EXPECT_FALSE(settings.useTcp);
    EXPECT_EQ(settings.serverIp, "");
    EXPECT_EQ(settings.tcpPort, 0u);
    EXPECT_EQ(settings.serverPipeName, "");
    EXPECT_EQ(settings.clientPipeName, "");
    EXPECT_EQ(settings.executable, "");
    EXPECT_TRUE(settings.initMfc);
}

TEST_F(ClientSettingsFile, AMissingFileReadsAsAnEmptyOne) {
    const std::string path = folder_.pathOf("missing.ini");
    EXPECT_FALSE(ClientSettings::read(path).useTcp);
    EXPECT_EQ(ClientSettings::read(path).executable, "");
    EXPECT_TRUE(ClientSettings::read(path).initMfc);
    EXPECT_FALSE(fileExists(path));
}

TEST_F(ClientSettingsFile, AnyCaseOfTrueSelectsTcp) {
    for (const char* text : {"true", "TRUE", "True", "tRuE", "\"true\""})
        EXPECT_TRUE(settingsOf(std::string("UseTcp=") + text).useTcp) << text;
}

TEST_F(ClientSettingsFile, AnyOtherTextSelectsWindowMessages) {
    for (const char* text : {"1", "yes", "false", "truee", "tru", "true true", ""})
        EXPECT_FALSE(settingsOf(std::string("UseTcp=") + text).useTcp) << text;
}

TEST_F(ClientSettingsFile, OnlyInitMfcOneInitialisesTheFramework) {
    EXPECT_TRUE(settingsOf("InitMFC=1").initMfc);
    for (const char* text : {"0", "2", "-1", "true", "11"})
        EXPECT_FALSE(settingsOf(std::string("InitMFC=") + text).initMfc) << text;
}

TEST_F(ClientSettingsFile, KeysOfOtherSectionsAreNotRead) {
    const std::string path =
        folder_.write("other.ini", "[Other]\r\nUseTcp=true\r\nQORexecutable=c:\\q.exe\r\n");
    EXPECT_FALSE(ClientSettings::read(path).useTcp);
    EXPECT_EQ(ClientSettings::read(path).executable, "");
}

TEST_F(ClientSettingsFile, AnExecutableOf9999CharactersIsReadWhole) {
    const std::string longest(ClientSettings::maxLaunchChars, 'x');
    EXPECT_EQ(settingsOf("QORexecutable=" + longest).executable, longest);
    EXPECT_EQ(settingsOf("QORexecutable=" + longest + "y").executable, longest);
}

TEST_F(ClientSettingsFile, AValueOf5199CharactersIsReadWhole) {
    const std::string longest(ClientSettings::maxValueChars, 'i');
    EXPECT_EQ(settingsOf("ServerIp=" + longest).serverIp, longest);
    EXPECT_EQ(settingsOf("ServerIp=" + longest + "j").serverIp, longest);
}

}  // namespace
