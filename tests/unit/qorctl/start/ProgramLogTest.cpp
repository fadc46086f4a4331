#include "start/ProgramLog.h"

#include <gmock/gmock.h>

#include "support/TempFolder.h"

using qorctl::doctor::SettingsFacts;
using qorctl::start::ProgramLog;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ProgramLogs : public testing::Test {
protected:
    TempFolder folder;

    ProgramLog logOf(const std::string& settings) {
        return ProgramLog(SettingsFacts::read(folder.writeText("qor.ini", settings)),
                          "c:\\bin\\qor.exe");
    }
};

TEST_F(ProgramLogs, HaveThePathThatAnySectionNames) {
    const ProgramLog beside = logOf("[CommonSettings]\nLog=no.log\n[Program]\nlog=its.log\n");
    const ProgramLog absolute = logOf("[Program]\nLog=" + folder.pathOf("other.log") + "\n");
    folder.write("no.log", "no\n");
    folder.write("its.log", "its\n");
    folder.write("other.log", "other\n");
    EXPECT_THAT(beside.lastLines(9), ElementsAre("its"));
    EXPECT_THAT(absolute.lastLines(9), ElementsAre("other"));
}

TEST_F(ProgramLogs, LieBesideTheSettingsByTheProgramsNameIfNoneIsNamed) {
    const ProgramLog log = logOf("[CommonSettings]\n");
    EXPECT_THAT(log.lastLines(9), IsEmpty());
    folder.write("qor.log", "one\r\n\r\ntwo\r\nthree");
    EXPECT_THAT(log.lastLines(2), ElementsAre("two", "three"));
}

TEST_F(ProgramLogs, TellWhatIsNew) {
    folder.write("qor.log", "an old line\n");
    const ProgramLog log = logOf("[CommonSettings]\n");
    EXPECT_THAT(log.lastLines(9), IsEmpty());
    folder.write("qor.log", "an old line\nnew\n");
    EXPECT_THAT(log.lastLines(9), ElementsAre("new"));
    folder.write("qor.log", "anew\n");
    EXPECT_THAT(log.lastLines(9), ElementsAre("anew"));
}

}  // namespace
