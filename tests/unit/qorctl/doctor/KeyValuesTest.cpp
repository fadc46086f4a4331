#include "doctor/KeyValues.h"

#include <gmock/gmock.h>

#include "Found.h"
#include "support/TempFolder.h"

using namespace qorctl::doctor;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class KeyValues : public testing::Test {
protected:
    TempFolder folder;

    Findings check(const std::string& lines) {
        return checkValues(
            SettingsFacts::read(folder.writeText("qor.ini", "[CommonSettings]\n" + lines)));
    }
    Finding port(const std::string& text) {
        return found(check("UseTcp=true\nTcpPort=" + text + "\n"), "settings.TcpPort");
    }
};

TEST_F(KeyValues, EveryKeyHasItsValueAndWhereItComesFrom) {
    const auto findings =
        check("QORexecutable=q.exe\nUseTcp=True\nServerIp=10.0.0.7\nTcpPort=5000\n");

    EXPECT_THAT(idsOf(findings),
                ElementsAre("settings.QORexecutable", "settings.UseTcp", "settings.ServerIp",
                            "settings.TcpPort", "settings.ServerPipeName",
                            "settings.ClientPipeName", "settings.InitMFC"));
    for (const Finding& finding : findings) EXPECT_EQ(Status::ok, finding.status) << finding.what;
    EXPECT_EQ("\"q.exe\" (file)", findings[0].what);
    EXPECT_EQ("\"True\" (file): TCP", findings[1].what);
    EXPECT_EQ("\"\" (default, not in the file), not used over TCP", findings[4].what);
    EXPECT_EQ("1 (default, not in the file)", findings[6].what);
}

TEST_F(KeyValues, AnEmptyValueIsToldFromAMissingOne) {
    EXPECT_EQ("\"\" (empty in the file): a host does not start QOR",
              found(check("QORexecutable=\n"), "settings.QORexecutable").what);
    EXPECT_EQ("\"\" (default, not in the file): a host does not start QOR",
              found(check(""), "settings.QORexecutable").what);
}

TEST_F(KeyValues, AnOddTransportIsAWarning) {
    for (const char* const text : {"1", "yes", "on", "true ; TCP"})
        EXPECT_EQ(Status::warning,
                  found(check(std::string("UseTcp=") + text + "\n"), "settings.UseTcp").status)
            << text;
    for (const char* const text : {"false", "FALSE", "0", ""})
        EXPECT_EQ(Status::ok,
                  found(check(std::string("UseTcp=") + text + "\n"), "settings.UseTcp").status)
            << text;
}

TEST_F(KeyValues, APortIsANumberInItsRange) {
    for (const char* const text : {"1", "5000", "65535"})
        EXPECT_EQ(Status::ok, port(text).status) << text;
    for (const char* const text : {"0", "65536", "99999", "4294967296"}) {
        EXPECT_EQ(Status::problem, port(text).status) << text;
        EXPECT_THAT(port(text).what, HasSubstr("out of range")) << text;
    }
    for (const char* const text : {"port", "-1", ""}) {
        EXPECT_EQ(Status::problem, port(text).status) << text;
        EXPECT_THAT(port(text).what, HasSubstr("not a number")) << text;
    }
    EXPECT_EQ(Status::warning, port("5000x").status);
    EXPECT_THAT(port("5000x").what, HasSubstr("read as 5000"));
    EXPECT_EQ(Status::problem, found(check("UseTcp=true\n"), "settings.TcpPort").status);
    EXPECT_EQ(Status::ok, found(check("TcpPort=x\n"), "settings.TcpPort").status)
        << "not used over window messages";
}

TEST_F(KeyValues, AnEmptyAddressIsAWarning) {
    EXPECT_EQ(Status::warning, found(check("UseTcp=true\n"), "settings.ServerIp").status);
}

TEST_F(KeyValues, WindowsNeedTitlesThatDiffer) {
    const auto none = check("");
    EXPECT_EQ(Status::problem, found(none, "settings.ServerPipeName").status);
    EXPECT_EQ(Status::problem, found(none, "settings.ClientPipeName").status);

    const auto same = check("ServerPipeName=Q\nClientPipeName=q\n");
    EXPECT_EQ(Status::problem, found(same, "settings.ServerPipeName").status);
    EXPECT_THAT(found(same, "settings.ServerPipeName").what, HasSubstr("the same title"));

    const auto good = check("ServerPipeName=Q\nClientPipeName=H\n");
    EXPECT_EQ(Status::ok, found(good, "settings.ServerPipeName").status);
    EXPECT_EQ(Status::ok, found(good, "settings.ClientPipeName").status);
}

TEST_F(KeyValues, AValueThatIsCutIsAProblem) {
    const auto cut =
        check("ServerPipeName=" + std::string(maxValueChars + 1, 'x') + "\nClientPipeName=H\n");
    EXPECT_EQ(Status::problem, found(cut, "settings.ServerPipeName").status);
    EXPECT_THAT(found(cut, "settings.ServerPipeName").what, HasSubstr("5200 characters"));
    const auto fits =
        check("ServerPipeName=" + std::string(maxValueChars, 'x') + "\nClientPipeName=H\n");
    EXPECT_EQ(Status::ok, found(fits, "settings.ServerPipeName").status);
}

TEST_F(KeyValues, AFrameworkFlagThatIsNoNumberIsAWarning) {
    EXPECT_EQ(Status::warning, found(check("InitMFC=yes\n"), "settings.InitMFC").status);
    EXPECT_EQ(Status::ok, found(check("InitMFC=0\n"), "settings.InitMFC").status);
}

}  // namespace
