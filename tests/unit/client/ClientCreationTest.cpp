#include <gmock/gmock.h>

#include <stdexcept>

#include "client/ClientExternalOperating.h"
#include "framework/Application.h"
#include "support/TempFolder.h"

namespace {

/// Clients with their real transports, on the system's clock.
class ClientCreation : public ::testing::Test {
protected:
    void settings(const std::string& lines) {
        settingsPath = folder.write("qor.ini", "[CommonSettings]\r\n" + lines);
    }

    TempFolder folder;
    std::string settingsPath;
};

std::string textOfFailedCreation(const std::string& settingsPath) {
    try {
        ClientExternalOperating::create(settingsPath, nullptr);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST_F(ClientCreation, AMissingSettingsFileIsToldWithItsPath) {
    const std::string path = folder.pathOf("no such %s.ini");
    EXPECT_EQ(
        textOfFailedCreation(path),
        "Specified settings file for QOR 'external operation mode' is not valid.\nFile: " + path);
    EXPECT_EQ(textOfFailedCreation(""),
              "Specified settings file for QOR 'external operation mode' is not valid.\nFile: ");
}

TEST_F(ClientCreation, AFolderInPlaceOfTheSettingsFileIsToldLikeAMissingFile) {
    const std::string text =
        "Specified settings file for QOR 'external operation mode' is not valid.\nFile: ";
    const std::string withBackslash = folder.path() + "\\";
    EXPECT_EQ(textOfFailedCreation(folder.path()), text + folder.path());
    EXPECT_EQ(textOfFailedCreation(withBackslash), text + withBackslash);
    EXPECT_EQ(textOfFailedCreation("c:\\"), text + "c:\\");
}

/// A client of these settings and its window's title; is there such a window while it lives?
bool makesAWindow(const std::string& settingsPath, const std::string& title) {
    EXPECT_EQ(FindWindowA(nullptr, title.c_str()), nullptr);
    const auto made = ClientExternalOperating::create(settingsPath, nullptr);
    return FindWindowA(nullptr, title.c_str()) != nullptr;
}

TEST_F(ClientCreation, OnlyTheTextTrueSelectsTcpAndAllElseAWindow) {
    const std::string title = "client of " + folder.path();
    const std::string peers =
        "ServerIp=127.0.0.1\r\nTcpPort=1\r\nServerPipeName=nobody\r\n"
        "ClientPipeName=" +
        title + "\r\n";
    for (const char* choice : {"", "UseTcp=1\r\n", "UseTcp=yes\r\nInitMFC=0\r\n"}) {
        settings(choice + peers);
        EXPECT_TRUE(makesAWindow(settingsPath, title)) << choice;
    }
    for (const char* choice : {"UseTcp=TRUE\r\n", "UseTcp=true\r\nInitMFC=0\r\n"}) {
        settings(choice + peers);
        EXPECT_FALSE(makesAWindow(settingsPath, title)) << choice;
    }
}

/// The activation context of the program's manifest, which the library is to have made.
class ActivationContext : public ClientCreation {
protected:
    ActivationContext() { forget(); }
    ~ActivationContext() override { forget(); }

    static bool isThere() { return AfxGetModuleState()->m_hActCtx != INVALID_HANDLE_VALUE; }

private:
    static void forget() {
        if (isThere()) ReleaseActCtx(AfxGetModuleState()->m_hActCtx);
        AfxGetModuleState()->m_hActCtx = INVALID_HANDLE_VALUE;
    }
};

TEST_F(ActivationContext, IsMadeForALibraryThatLivesInItsHostsApplication) {
    settings("InitMFC=0\r\n");
    ClientExternalOperating::create(settingsPath, nullptr);
    EXPECT_TRUE(isThere());
}

TEST_F(ActivationContext, IsNotMadeForALibraryThatIsAnApplicationOfItsOwn) {
    settings("InitMFC=1\r\n");
    ClientExternalOperating::create(settingsPath, nullptr);
    EXPECT_FALSE(isThere());
}

}  // namespace
