#include "doctor/KeyNames.h"

#include <gmock/gmock.h>

#include "Found.h"
#include "support/TempFolder.h"

using namespace qorctl::doctor;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class KeyNames : public testing::Test {
protected:
    TempFolder folder;

    Findings check(const std::string& text) {
        return checkNames(SettingsFacts::read(folder.writeText("qor.ini", text)));
    }
    /// The same, of a file that chooses TCP.
    Findings checkTcp(const std::string& lines) {
        return check("[CommonSettings]\nUseTcp=true\n" + lines);
    }
};

TEST_F(KeyNames, AFileWithTheRightNamesIsItsPathOnly) {
    const Findings findings =
        checkTcp("TCPPORT=5000\nserverip=h\nQORexecutable=q\n[Other]\nTcpPort=1\n");

    EXPECT_THAT(idsOf(findings), ElementsAre("settings.file"));
    EXPECT_EQ(Status::ok, findings[0].status);
    EXPECT_EQ(folder.pathOf("qor.ini"), findings[0].what);
}

TEST_F(KeyNames, AFileThatIsNoTextIsAProblemAndEndsTheCheck) {
    folder.write("qor.exe", std::string("MZ\0\0[CommonSettings]\n", 21));
    const Findings binary = checkNames(SettingsFacts::read(folder.pathOf("qor.exe")));
    EXPECT_THAT(idsOf(binary), ElementsAre("settings.file"));
    EXPECT_EQ(Status::problem, binary[0].status);
    EXPECT_THAT(binary[0].what, HasSubstr("is no text file"));

    folder.write("qor.ini", std::string("\xFF\xFE[\0C\0", 6));
    EXPECT_TRUE(SettingsFacts::read(folder.pathOf("qor.ini")).isText);
}

TEST_F(KeyNames, AMissingFileAndAFolderAreProblemsAndEndTheCheck) {
    const Findings missing = checkNames(SettingsFacts::read(folder.pathOf("none.ini")));
    EXPECT_THAT(idsOf(missing), ElementsAre("settings.file"));
    EXPECT_EQ(Status::problem, missing[0].status);
    EXPECT_THAT(missing[0].what, HasSubstr("does not exist"));

    const Findings whole = checkNames(SettingsFacts::read(folder.path()));
    EXPECT_EQ(Status::problem, whole[0].status);
    EXPECT_THAT(whole[0].what, HasSubstr("is a folder"));
}

TEST_F(KeyNames, AUtf8MarkHidesTheFirstLineIfThatIsASectionOrAKey) {
    const std::string mark = "\xEF\xBB\xBF";
    const std::string section = "[CommonSettings]\nUseTcp=true\n";
    const auto file = [&](const std::string& text) { return found(check(text), "settings.file"); };
    for (const std::string& text :
         {section, " \t" + section, "[Other]\nX=1\n" + section, "X=1\n" + section})
        EXPECT_EQ(Status::problem, file(mark + text).status) << text;
    EXPECT_THAT(file(mark + " " + section).what,
                HasSubstr("UTF-8 mark, which hides the line [CommonSettings] from"));
    for (const std::string& text :
         {"; a comment\n" + section, "\n" + section, "  \n" + section, "# a=comment\n" + section,
          "// a=comment\n" + section, "no more than words\n" + section})
        EXPECT_EQ(Status::warning, file(mark + text).status) << text;
    EXPECT_THAT(file(mark + "\n" + section).remedy, HasSubstr("without the mark"));
    EXPECT_EQ(Status::ok, file(section + mark).status);
}

TEST_F(KeyNames, AMisspeltKeyIsAProblemWhereItIsWanted) {
    const Finding wanted = found(checkTcp("TcpPrt=5000\n"), "settings.misspelt.TcpPrt");
    EXPECT_EQ(Status::problem, wanted.status);
    EXPECT_EQ("TcpPrt is not read: misspelt for TcpPort", wanted.what);
    EXPECT_EQ("write TcpPort in its place", wanted.remedy);

    const auto besides = checkTcp("TcpPort=5000\nTcpPrt=5001\n");
    EXPECT_EQ(Status::warning, found(besides, "settings.misspelt.TcpPrt").status);
    const auto unused = checkTcp("TcpPort=5000\nServerPipeNam=x\n");
    EXPECT_EQ(Status::warning, found(unused, "settings.misspelt.ServerPipeNam").status);
}

TEST_F(KeyNames, OtherNamesAreQorsOwn) {
    EXPECT_THAT(idsOf(checkTcp("TcpPort=5000\nDatabase=x\nLanguage=de\n;TcpPrt=1\n")),
                ElementsAre("settings.file"));
    EXPECT_THAT(idsOf(checkTcp("TcpPort=5\n#ServerIp=h\n//UseTcp=x\n # QORexecutable=q\n")),
                ElementsAre("settings.file"))
        << "nor is what is commented out";
}

TEST_F(KeyNames, AKeyInAnotherSectionIsFound) {
    const Finding elsewhere =
        found(checkTcp("[Simulator]\nTcpPort=5000\n"), "settings.elsewhere.TcpPort");
    EXPECT_EQ(Status::problem, elsewhere.status);
    EXPECT_EQ("TcpPort stands in [Simulator], where it is not read", elsewhere.what);
    EXPECT_EQ("move it to [CommonSettings]", elsewhere.remedy);
}

TEST_F(KeyNames, AMissingOrMisspeltSectionIsOneProblem) {
    const auto misspelt = check("[CommonSetings]\nUseTcp=true\nTcpPort=5\n");
    EXPECT_THAT(idsOf(misspelt), ElementsAre("settings.file", "settings.section"));
    EXPECT_EQ("section [CommonSetings] is not read, it is misspelt", misspelt[1].what);
    EXPECT_EQ(Status::problem, misspelt[1].status);

    EXPECT_EQ(Status::problem, found(check("[Other]\nX=1\n"), "settings.section").status);
    EXPECT_EQ(Status::problem, found(check(""), "settings.section").status);
}

TEST_F(KeyNames, OfTwoSectionsWithOneNameTheFirstIsRead) {
    const auto findings = checkTcp("TcpPrt=5000\n[Other]\nX=1\n[commonsettings]\nTcpPort=5\n");
    EXPECT_THAT(idsOf(findings),
                ElementsAre("settings.file", "settings.section", "settings.misspelt.TcpPrt"));
    EXPECT_EQ(Status::warning, findings[1].status);
    EXPECT_EQ(Status::problem, findings[2].status) << "the other TcpPort is not read";
}

TEST_F(KeyNames, AKeyThatStandsTwiceIsAWarning) {
    const auto findings = checkTcp("TcpPort=5000\ntcpport=5001\n");
    EXPECT_EQ(Status::warning, found(findings, "settings.twice.tcpport").status);
}

}  // namespace
