// Which lines are written at all.
#include "TraceFixture.h"

namespace {

class Filter : public testing_support::TraceFixture {
protected:
    void sayInAllCategories() {
        for (const unsigned int category : {1u, 2u, 4u, 8u}) write("", category, 0, "x\n");
    }
};

const std::string header = "ts \n";

}  // namespace

TEST_F(Filter, ATsValueOf2LetsOnlyCategory2LinesThrough) {
    loadSettings("ts=2\n");
    sayInAllCategories();
    EXPECT_EQ(output(), header + "2\tx\n");
}

TEST_F(Filter, ATsValueOf0SilencesEverything) {
    loadSettings("ts=0\n");
    sayInAllCategories();
    EXPECT_EQ(output(), header);
}

TEST_F(Filter, OneCommonBitIsEnough) {
    loadSettings("ts=6\n");
    write("", 3, 0, "common\n");
    write("", 9, 0, "none\n");
    EXPECT_EQ(output(), header + "0\tcommon\n");
}

TEST_F(Filter, TheLargestMaskLetsTheTopBitThrough) {
    loadSettings("ts=4294967295\n");
    write("", 0x80000000u, 0, "x\n");
    EXPECT_EQ(output(), header + "0\tx\n");
}

TEST_F(Filter, ACategoryOf0IsNeverWritten) {
    write("", 0, 0, "x\n");
    EXPECT_EQ(output(), "");
}

TEST_F(Filter, TheVerbosityMayReachTheLimitOf255AndNotPassIt) {
    write("", 4, 255, "at\n");
    write("", 4, 256, "above\n");
    write("", 4, -1, "below\n");
    EXPECT_EQ(output(), "1\tat\n1\tbelow\n");
}

TEST_F(Filter, ATlValueReplacesTheLimit) {
    loadSettings("tl=-5\n");
    write("", 4, -5, "at\n");
    write("", 4, -4, "above\n");
    EXPECT_EQ(output(), header + "1\tat\n");
}

TEST_F(Filter, NotraceSilencesEverythingForGood) {
    loadSettings("notrace\n");
    sayInAllCategories();
    loadSettings("tid\n");
    sayInAllCategories();
    EXPECT_EQ(output(), header);
}

TEST_F(Filter, AnyIncludeSilencesTheLibrary) {
    loadSettings("include=alpha\n");
    say("x");
    write("alpha", 4, 0, "y\n");
    EXPECT_EQ(output(), header + "1\ty\n");
}

TEST_F(Filter, ExcludeDoesNothingToTheLibrary) {
    loadSettings("exclude=alpha, beta\n");
    say("x");
    write("beta", 4, 0, "y\n");
    EXPECT_EQ(output(), header + "1\tx\n");
}

TEST_F(Filter, NamesAreComparedWithoutRegardToCase) {
    loadSettings("include=Alpha,BETA\n");
    write("aLPHA", 4, 0, "a\n");
    write("beta", 4, 0, "b\n");
    write("bet", 4, 0, "c\n");
    write("betas", 4, 0, "d\n");
    EXPECT_EQ(output(), header + "1\ta\n1\tb\n");
}

TEST_F(Filter, AnIncludeListDecidesAloneOverTheExcludeList) {
    loadSettings("include=alpha\nexclude=alpha\n");
    write("alpha", 4, 0, "x\n");
    EXPECT_EQ(output(), header + "1\tx\n");
}

TEST_F(Filter, BlanksCommasAndTabsSeparateNames) {
    loadSettings("include= a ,\tb,c d\n");
    for (const char* module : {"a", "b", "c", "d", "a ,", ""}) write(module, 4, 0, "%s\n", module);
    EXPECT_EQ(output(), header + "1\ta\n1\tb\n1\tc\n1\td\n");
}
