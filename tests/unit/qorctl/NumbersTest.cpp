#include "Numbers.h"

#include <gmock/gmock.h>

#include <CLI/CLI.hpp>
#include <string>

#include "Subcommands.h"

using namespace qorctl;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::string wholeOf(std::string word) {
    const std::string why = whyNotWhole(word);
    return why.empty() ? word : why;
}

std::string realOf(std::string word) {
    const std::string why = whyNotReal(word);
    return why.empty() ? word : why;
}

/// "UINT:INT in [1 - 4]" is one.
bool isNumber(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::string kind = type.substr(0, type.find(':'));
    return kind == "UINT" || kind == "INT" || kind == "FLOAT" || kind == "NUMBER" || kind == "MS" ||
           kind == "SECONDS";
}

TEST(Numbers, WholeOnesAreDecimalOrHexadecimal) {
    EXPECT_EQ("0", wholeOf("0"));
    EXPECT_EQ("26", wholeOf("26"));
    EXPECT_EQ("26", wholeOf("0x1A"));
    EXPECT_EQ("26", wholeOf("0X0000000000000000000000000000001a"));
    EXPECT_EQ("4294967295", wholeOf("0xFFFFFFFF"));
    EXPECT_EQ("4294967295", wholeOf("4294967295"));
}

TEST(Numbers, WhatIsOctalToSomeIsRefusedWithBothReadings) {
    EXPECT_EQ("010 is ambiguous: write 10 (decimal) or 0x10", wholeOf("010"));
    EXPECT_EQ("0102 is ambiguous: write 102 (decimal) or 0x102", wholeOf("0102"));
    EXPECT_EQ("00 is ambiguous: write it without the leading zeros", wholeOf("00"));
    EXPECT_EQ("-007 is ambiguous: write 7 (decimal) or 0x7", realOf("-007"));
    EXPECT_EQ("01.5 is ambiguous: write it without the leading zeros", realOf("01.5"));
}

TEST(Numbers, WhatIsNoneIsToldWithAnExample) {
    for (const char* const word : {"1A", "abc", "", "-1", "1.5", "0x", "0x1G", "1e3", "++1", "1 2"})
        EXPECT_EQ(word + std::string(" is not a number: write 26 or 0x1A, for instance"),
                  wholeOf(word));
    for (const char* const word : {"abc", "", "1,5", "0x", "-0x1A", "e3", ".", "1.5.2"})
        EXPECT_THAT(realOf(word), StartsWith(word + std::string(" is not a number: write 26")));
}

TEST(Numbers, WhatDoesNotFitIsTold) {
    for (const char* const word : {"4294967296", "0x100000000", "99999999999999999999999999"})
        EXPECT_EQ(word + std::string(" is too large: 4294967295 (0xFFFFFFFF) at most"),
                  wholeOf(word));
}

TEST(Numbers, ThatAreTimesAreFinite) {
    for (const char* const text : {"nan", "inf", "-Infinity"}) {
        std::string word = text;
        EXPECT_EQ(text + std::string(" is not a number: write 26, -0.5 or 0x1A"),
                  whyNotFinite(word));
        EXPECT_EQ("", whyNotReal(word));
    }
}

TEST(Numbers, OfAMillionCharactersAreRefusedToo) {
    const std::string nines(1000000, '9'), zeros(1000000, '0'), dots = nines + "..";
    EXPECT_THAT(wholeOf(nines), HasSubstr("... is too large"));
    EXPECT_THAT(wholeOf(zeros), HasSubstr("... is ambiguous"));
    EXPECT_THAT(wholeOf("0x" + nines), HasSubstr("... is too large"));
    EXPECT_THAT(realOf(dots), HasSubstr("... is not a number"));
    EXPECT_EQ(nines, realOf(nines));
}

TEST(Numbers, RealOnesStayAsTheyAre) {
    for (const char* const word : {"0", "26", "-0.5", "+1e-3", ".5", "5.", "nan", "-inf", "0.25"})
        EXPECT_EQ(word, realOf(word));
    EXPECT_EQ("26", realOf("0x1A"));
}

// Also what a later command takes: whoever declares an option of numbers without the rule fails
// here.
TEST(Numbers, AllCommandsTakeThemAlike) {
    unsigned found = 0;
    for (const Subcommand& row : subcommands()) {
        CLI::App app;
        CLI::App* const command = app.add_subcommand(row.name, row.summary);
        row.declare(*command);
        for (CLI::Option* const option : command->get_options()) {
            if (!isNumber(*option)) continue;
            ++found;
            option->add_result("010");
            try {
                option->run_callback();
                ADD_FAILURE() << row.name << " takes 010 for " << option->get_name();
            } catch (const CLI::ValidationError& error) {
                EXPECT_THAT(error.what(), HasSubstr("010 is ambiguous")) << row.name;
            }
        }
    }
    EXPECT_GT(found, 100u);
}

}  // namespace
