// Reading the settings again while the process runs.
#include <algorithm>

#include "TraceFixture.h"

namespace {

std::time_t now = 0;

class Refresh : public testing_support::TraceFixture {
protected:
    Refresh() {
        now = 1000;
        context.secondsNow = []() -> std::int64_t { return now; };
    }

    void rewriteSettings(const std::string& lines) { folder.writeText("trace.cfg", lines); }
};

}  // namespace

TEST_F(Refresh, HappensAtTheFirstLineAfterTheSpanHasPassed) {
    loadSettings("tfr=10\n");
    rewriteSettings("tfr=10\nts=2\n");
    now += 9;
    say("before");
    now += 1;
    say("at");
    EXPECT_EQ(output(), "ts \n1\tbefore\n");
}

TEST_F(Refresh, StartsAFreshSpanEachTime) {
    loadSettings("tfr=10\n");
    now += 10;
    say("a");
    rewriteSettings("tfr=10\nts=0\n");
    now += 9;
    say("b");
    now += 1;
    say("c");
    EXPECT_EQ(output(), "ts \n1\ta\n1\tb\n");
}

TEST_F(Refresh, NeverHappensWithoutATfrLine) {
    loadSettings("tl=255\n");
    rewriteSettings("ts=0\n");
    now += 1000000;
    say("x");
    EXPECT_EQ(output(), "ts \n1\tx\n");
}

TEST_F(Refresh, HappensAlsoBeforeALineThatIsNotWanted) {
    loadSettings("tfr=10\nts=2\n");
    rewriteSettings("tfr=10\nts=4\n");
    now += 10;
    say("x");
    EXPECT_EQ(output(), "ts \n1\tx\n");
}

TEST_F(Refresh, NeverUndoesASwitch) {
    loadSettings("tfr=10\nnid\ntc\nnotrace\n");
    rewriteSettings("tfr=10\n");
    now += 10;
    say("x");
    context.openTraceFile(folder.pathOf("next.log"), "w");
    now += 10;
    say("y");
    EXPECT_EQ(output(), "ts tc \n");
    EXPECT_EQ(folder.readText("next.log"), "ts tc \n");
}

TEST_F(Refresh, LetsTheListsGrowByTheSameTokensUpToTheirCap) {
    // Each reading adds "m,other" and, from the second on, a blank; the 32nd is cut.
    loadSettings("tfr=1\ninclude=m,other\n");
    for (int i = 0; i < 100; ++i) {
        ++now;
        write("m", 4, 0, "x\n");
    }
    write("other", 4, 0, "y\n");
    const std::string all = output();
    EXPECT_EQ(std::count(all.begin(), all.end(), 'x'), 100);
    EXPECT_EQ(std::count(all.begin(), all.end(), 'y'), 1);
}

TEST_F(Refresh, GivesAFileThatWasOpenedInBetweenItsSettingsLine) {
    loadSettings("tfr=10\n");
    context.openTraceFile(folder.pathOf("host.log"), "w");
    say("first");
    now += 10;
    say("second");
    EXPECT_EQ(folder.readText("host.log"), "1\tfirst\nts \n1\tsecond\n");
}

TEST_F(Refresh, ReadsTheWholeFileAgainFromItsBeginning) {
    loadSettings("tfr=10\nts=2\n");
    rewriteSettings("tfr=10\ntl=7\n");
    now += 10;
    write("", 2, 8, "too verbose\n");
    write("", 2, 7, "x\n");
    EXPECT_EQ(output(), "ts \n2\tx\n");
}

TEST_F(Refresh, LoadingOtherSettingsLetsTheOldFileGo) {
    loadSettings("tfr=10\n");
    context.loadSettings(folder.writeText("second.cfg", "tl=255\n"));
    EXPECT_TRUE(std::filesystem::remove(folder.pathOf("trace.cfg")));
}
