// What stands before the message of a line.
#include <regex>

#include "support/FakeClock.h"
#include "TraceFixture.h"
#include "unit/common/TestThread.h"

using testing_support::ContextScope;
using testing_support::TestThread;

namespace {

class Columns : public testing_support::TraceFixture {
protected:
    std::string hpcColumnOf(const char* text) {
        const std::string before = output();
        say(text);
        const std::string line = output().substr(before.size());
        return line.substr(2, line.find('\t', 2) - 2);
    }
};

std::string localTimeText() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    std::string year = std::to_string(now.wYear % 100);
    if (year.size() == 1) year = " " + year;
    char rest[40];
    std::snprintf(rest, sizeof rest, "/%02d/%02d %02d:%02d:%02d", now.wMonth, now.wDay, now.wHour,
                  now.wMinute, now.wSecond);
    return year + rest;
}

}  // namespace

TEST_F(Columns, TheCategoryColumnCountsDownFrom3) {
    for (const unsigned int category : {1u, 2u, 4u, 8u, 3u, 0x80000000u})
        write("", category, 0, "x\n");
    EXPECT_EQ(output(), "3\tx\n2\tx\n1\tx\n0\tx\n0\tx\n0\tx\n");
}

TEST_F(Columns, TheThreadColumnIsTheThreadIdInHexadecimal) {
    loadSettings("tid\n");
    say("x");
    char expected[40];
    std::snprintf(expected, sizeof expected, "1\t%lX\tx\n", GetCurrentThreadId());
    EXPECT_EQ(output(), "ts tid \n" + std::string(expected));
}

TEST_F(Columns, TheDateColumnIsTheLocalTimeWithABlankPaddedYear) {
    loadSettings("dt\n");
    const std::string before = localTimeText();
    say("x");
    const std::string after = localTimeText();
    const std::string written = output();
    EXPECT_TRUE(written == "ts dt \n1\t" + before + "\tx\n" ||
                written == "ts dt \n1\t" + after + "\tx\n")
        << written << "not between " << before << " and " << after;
}

TEST_F(Columns, TheTickColumnHasEightDigits) {
    loadSettings("tc\n");
    FakeClock clock;
    clock.show(0x1AB);
    say("x");
    clock.show(0xFEDCBA98);
    say("y");
    EXPECT_EQ(output(), "ts tc \n1\t000001AB\tx\n1\tFEDCBA98\ty\n");
}

TEST_F(Columns, TheFirstHighResolutionStampIs0) {
    loadSettings("hpc\n");
    EXPECT_EQ(hpcColumnOf("x"), "       0");
}

TEST_F(Columns, AHighResolutionStampCountsTenthsOfAMillisecondSinceTheLast) {
    loadSettings("hpc\n");
    say("x");
    Sleep(50);
    const int tenthsOfMs = std::stoi(hpcColumnOf("y"));
    EXPECT_GE(tenthsOfMs, 400);
    EXPECT_LE(tenthsOfMs, 30000);
}

TEST_F(Columns, TheLastHighResolutionStampMayBeOfAnotherThread) {
    loadSettings("hpc\n");
    say("x");
    Sleep(300);
    TestThread([&] { say("other"); }).join();
    EXPECT_LT(std::stoi(hpcColumnOf("y")), 2500);
}

TEST_F(Columns, AllColumnsStandInTheirFixedOrder) {
    loadSettings("hpc\ntc\ndt\ntid\n");
    ContextScope outermost(context, "*\n");
    ContextScope scope(context, "scope\n");
    say("x");
    const std::regex line(
        "ts tid dt tc hpc \n.*\n1\t[0-9A-F]+\t[ 0-9][0-9]/[0-9]{2}/[0-9]{2} "
        "[0-9]{2}:[0-9]{2}:[0-9]{2}\t[0-9A-F]{8}\t +[0-9]+\t   x\n");
    EXPECT_TRUE(std::regex_match(output(), line)) << output();
}

TEST_F(Columns, ASettingsFileOfCommentsLeavesTheCategoryColumnOnly) {
    loadSettings("# tid tc hpc dt notrace\n");
    say("x");
    EXPECT_EQ(output(), "ts \n1\tx\n");
}
