#include "start/Sight.h"

#include <gmock/gmock.h>

using qorctl::doctor::Holder;
using qorctl::start::ChildWatch;
using qorctl::start::Sight;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

const char* const executable = "c:\\qor\\qor.exe";
const Holder itself{7, "C:\\QOR\\qor.exe"};
const Holder stranger{8, "c:\\windows\\other.exe"};

class SightOfQor : public testing::Test {
protected:
    Sight sight;

    SightOfQor() {
        sight.peer.place = "port 5000 of h";
        sight.settingsPath = "c:\\s.ini";
        sight.executable = executable;
        sight.isProgram = true;
    }
    void ended(unsigned long code) { sight.end = ChildWatch::End{code}; }
    bool isForGood() const {
        const auto seen = sight.whyInVain();
        return seen && seen->isForGood;
    }
    /// Told once it is late, and waited for all the same.
    void expectNoteOnly(const std::string& what) {
        sight.isLate = false;
        EXPECT_FALSE(sight.whyInVain());
        sight.isLate = true;
        const auto seen = sight.whyInVain();
        ASSERT_TRUE(seen);
        EXPECT_FALSE(seen->isForGood) << seen->what;
        EXPECT_THAT(seen->what, HasSubstr(what));
    }
};

TEST_F(SightOfQor, OneThatIsSlowIsWaitedFor) {
    EXPECT_FALSE(sight.whyInVain());
    sight.isLate = true;
    EXPECT_FALSE(sight.whyInVain());
}

TEST_F(SightOfQor, AnEndWithAnErrorWhereNobodyIsIsForGood) {
    ended(2);
    sight.lastLines = {"no model"};
    const auto seen = sight.whyInVain();
    ASSERT_TRUE(seen);
    EXPECT_TRUE(seen->isForGood);
    EXPECT_TRUE(seen->hasEnded);
    EXPECT_EQ("c:\\qor\\qor.exe has ended with exit code 2", seen->what);
    EXPECT_THAT(seen->details, ElementsAre("its log: no model", HasSubstr("start it by hand")));
}

TEST_F(SightOfQor, AnEndWithoutAnErrorMayHaveLeftItToAnother) {
    ended(0);
    expectNoteOnly("has ended with exit code 0");
}

TEST_F(SightOfQor, AnEndOfWhichTheSystemTellsNothingMayHaveToo) {
    sight.end = ChildWatch::End{};
    expectNoteOnly("c:\\qor\\qor.exe has ended");
}

TEST_F(SightOfQor, AnEndWithAnErrorWhereSomebodyMayBeIsNotForGood) {
    ended(2);
    sight.peer.isTold = false;
    expectNoteOnly("has ended with exit code 2");
    sight.peer.isTold = true;
    sight.peer.servers = {Holder()};
    expectNoteOnly("held by a process that the system does not name");
}

TEST_F(SightOfQor, OneThatIsThereAndSilentMayBeBusy) {
    sight.peer.servers = sight.before = {itself};
    expectNoteOnly("held by C:\\QOR\\qor.exe (process 7), which does not answer as QOR does");
}

TEST_F(SightOfQor, AStrangerThatWasThereBeforeIsForGoodOnceItIsLate) {
    sight.peer.servers = sight.before = {stranger};
    EXPECT_FALSE(sight.whyInVain()) << "it may answer";
    sight.isLate = true;
    EXPECT_TRUE(isForGood());
    EXPECT_FALSE(sight.whyInVain()->hasEnded);
    ended(0);
    EXPECT_TRUE(isForGood());
    EXPECT_TRUE(sight.whyInVain()->hasEnded);
}

TEST_F(SightOfQor, AStrangerThatHasComeSinceMayBeWhatTheExecutableHasStarted) {
    sight.peer.servers = {stranger};
    expectNoteOnly("other.exe");
}

TEST_F(SightOfQor, WhereNoProgramIsNamedAnyMayBeQor) {
    sight.peer.servers = sight.before = {stranger};
    sight.isProgram = false;  // a batch file
    expectNoteOnly("other.exe");
    sight.executable.clear();
    expectNoteOnly("other.exe");
}

}  // namespace
