// How single lines of a settings file are understood.
#include <gtest/gtest.h>

#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>

#include "trace/TraceSettings.h"

using tracelog::TraceSettings;

namespace {

TraceSettings after(std::initializer_list<const char*> lines) {
    TraceSettings settings;
    TraceSettings::FileRequest file;
    for (const char* line : lines) settings.applyLine(line, file);
    return settings;
}

std::string textOf(std::string_view text) {
    return std::string(text);
}

// All that a line changes, as one text.
std::string effectOf(const std::string& line) {
    TraceSettings s;
    TraceSettings::FileRequest file;
    const bool named = s.applyLine(line, file);
    const std::string numbers = std::to_string(s.categoryMask) + ' ' +
                                std::to_string(s.verbosityLimit) + ' ' +
                                std::to_string(s.refreshSeconds);
    return (s.enabled ? "on " : "off ") + textOf(s.header()) +
           (s.indentColumn ? "indent " : "flat ") + numbers + " +" + textOf(s.includeList) + " -" +
           textOf(s.excludeList) + (named ? textOf(file.path) : "");
}

struct FileLine {
    bool named = false;
    TraceSettings::FileRequest file;
};

FileLine fileOf(const std::string& line) {
    TraceSettings settings;
    FileLine result;
    result.named = settings.applyLine(line, result.file);
    return result;
}

}  // namespace

TEST(SettingsLines, TheInitialSettingsWriteEverythingWithTheCategory) {
    const TraceSettings settings;
    EXPECT_TRUE(settings.enabled && settings.levelColumn && settings.indentColumn);
    EXPECT_FALSE(settings.threadColumn || settings.dateColumn || settings.tickColumn ||
                 settings.hpcColumn);
    EXPECT_EQ(settings.categoryMask, 0xFFFFFFFFu);
    EXPECT_EQ(settings.verbosityLimit, 255);
    EXPECT_EQ(settings.refreshSeconds, 0);
    EXPECT_EQ(textOf(settings.header()), "ts \n");
}

TEST(SettingsLines, EachSwitchThrowsItsColumn) {
    EXPECT_TRUE(after({"tid\n"}).threadColumn);
    EXPECT_TRUE(after({"tc\n"}).tickColumn);
    EXPECT_TRUE(after({"hpc\n"}).hpcColumn);
    EXPECT_TRUE(after({"dt\n"}).dateColumn);
    EXPECT_FALSE(after({"nid\n"}).indentColumn);
    EXPECT_FALSE(after({"notrace\n"}).enabled);
}

TEST(SettingsLines, TheHeaderNamesTheColumnsInTheirOwnOrder) {
    EXPECT_EQ(textOf(after({"hpc\n", "tc\n", "dt\n", "tid\n"}).header()), "ts tid dt tc hpc \n");
    EXPECT_EQ(textOf(after({"hpc\n", "nid\n"}).header()), "ts hpc \n");
}

TEST(SettingsLines, OnlyTheFirstKeywordOfTheFixedOrderIsAppliedWhereverItStands) {
    const char* const order[] = {"notrace", "tid", "tc",  "hpc",     "dt",      "nid",
                                 "tl",      "ts",  "tfr", "include", "exclude", "tf"};
    for (std::size_t first = 0; first < std::size(order); ++first) {
        const std::string alone = effectOf(std::string(order[first]) + "=1\n");
        EXPECT_NE(alone, effectOf("\n")) << order[first];
        for (std::size_t later = first + 1; later < std::size(order); ++later) {
            const std::string line = std::string(order[later]) + " " + order[first] + "=1\n";
            EXPECT_EQ(effectOf(line), alone) << line;
        }
    }
}

TEST(SettingsLines, ATraceFileWhosePathContainsDtTurnsTheDateColumnOnAndNamesNoFile) {
    EXPECT_FALSE(fileOf("tf=C:\\width\\dtrace.log\n").named);
    EXPECT_TRUE(after({"tf=C:\\dtrace.log\n"}).dateColumn);
}

TEST(SettingsLines, AnIncludeLineWhoseTokensContainTcTurnsTheTickColumnOn) {
    const TraceSettings settings = after({"include=watch,match tcp\n"});
    EXPECT_TRUE(settings.tickColumn);
    EXPECT_EQ(textOf(settings.includeList), "");
}

TEST(SettingsLines, APathWithTsInItIsTakenForAMask) {
    const TraceSettings settings = after({"tf=C:\\results\\x.log\n"});
    EXPECT_EQ(settings.categoryMask, 0u) << "the value is no number";
}

TEST(SettingsLines, AHashInColumn0MakesAComment) {
    EXPECT_FALSE(after({"#tid\n"}).threadColumn);
    EXPECT_TRUE(after({" #tid\n"}).threadColumn);
}

TEST(SettingsLines, KeywordsAreCaseSensitive) {
    EXPECT_FALSE(after({"TID\n"}).threadColumn);
    EXPECT_TRUE(after({"NoTrace\n"}).enabled);
}

TEST(SettingsLines, NumbersAreDecimalWithBlanksBefore) {
    EXPECT_EQ(after({"tl =   12\n"}).verbosityLimit, 12);
    EXPECT_EQ(after({"tl=-3\n"}).verbosityLimit, -3);
    EXPECT_EQ(after({"ts=4294967295\n"}).categoryMask, 0xFFFFFFFFu);
    EXPECT_EQ(after({"ts=0x10\n"}).categoryMask, 0u) << "decimal: ends at the x";
    EXPECT_EQ(after({"tfr=30\r\n"}).refreshSeconds, 30);
}

TEST(SettingsLines, AMissingValueLeavesTheOldOne) {
    EXPECT_EQ(after({"tl\n", "tl=\n", "tl=   \n", "tl="}).verbosityLimit, 255);
    EXPECT_EQ(after({"ts=5\n", "ts\n", "ts=\r\n"}).categoryMask, 5u);
    EXPECT_EQ(textOf(after({"include\n", "include=\n"}).includeList), "");
}

TEST(SettingsLines, ANegativeRefreshMeansNever) {
    EXPECT_EQ(after({"tfr=-1\n"}).refreshSeconds, 0);
}

TEST(SettingsLines, ListsGrowByABlankAndAreCappedAt249Characters) {
    EXPECT_EQ(textOf(after({"include=a\n", "include= b,c\n"}).includeList), "a b,c");
    EXPECT_EQ(textOf(after({"exclude=a\n", "exclude=b\n"}).excludeList), "a b");
    const std::string longLine = "include=" + std::string(300, 'm') + "\n";
    EXPECT_EQ(textOf(after({longLine.c_str()}).includeList), std::string(249, 'm'));
    EXPECT_EQ(textOf(after({longLine.c_str(), "include=x\n"}).includeList), std::string(249, 'm'));
}

TEST(SettingsLines, ATraceFileLineGivesPathAndMode) {
    const FileLine plain = fileOf("tf=C:\\a b\\x.log\n");
    EXPECT_TRUE(plain.named);
    EXPECT_EQ(textOf(plain.file.path), "C:\\a b\\x.log");
    EXPECT_EQ(textOf(plain.file.mode), "w");
    const FileLine appended = fileOf("tf =  x.log ,  a \r\n");
    EXPECT_EQ(textOf(appended.file.path), "x.log");
    EXPECT_EQ(textOf(appended.file.mode), "a");
    EXPECT_EQ(textOf(fileOf("tf=x.log,\n").file.mode), "w");
}

TEST(SettingsLines, ATraceFileLineWithoutAPathNamesNoFile) {
    for (const char* line : {"tf\n", "tf=\n", "tf=,a\n", "tf=  ,w\n"})
        EXPECT_FALSE(fileOf(line).named) << line;
}

TEST(SettingsLines, AnUnknownOrEmptyLineChangesNothing) {
    EXPECT_EQ(textOf(after({"\n", "", "unknown=1\n", "\x01\xFF\n"}).header()), "ts \n");
}
