#include "common/LastError.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>

namespace {

std::string textFor(DWORD code) {
    SetLastError(code);
    return common::lastErrorText();
}

// What the system says, asked for in another way. It differs between versions and languages.
std::string systemText(DWORD code) {
    char buffer[8192] = "";
    FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                   MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), buffer, sizeof buffer, nullptr);
    return buffer;
}

std::string onOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\r', ' ');
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

}  // namespace

TEST(LastError, TheTextIsTheCodeTwoBlanksAndTheSystemsMessage) {
    ASSERT_FALSE(systemText(ERROR_FILE_NOT_FOUND).empty());
    EXPECT_EQ(textFor(ERROR_FILE_NOT_FOUND),
              "code: 2  text: " + onOneLine(systemText(ERROR_FILE_NOT_FOUND)));
}

TEST(LastError, CarriageReturnAndLineFeedBecomeABlankEach) {
    const std::string raw = systemText(ERROR_ACCESS_DENIED);
    ASSERT_GE(raw.size(), 2u);
    ASSERT_EQ(raw.substr(raw.size() - 2), "\r\n");
    const std::string text = textFor(ERROR_ACCESS_DENIED);
    EXPECT_EQ(text.substr(text.size() - 3), raw.substr(raw.size() - 3, 1) + "  ");
    EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos);
}

TEST(LastError, ACodeWithoutASystemTextGivesNullInParentheses) {
    const DWORD code = 0x2FFFFFF0;  // bit 29 marks the codes of applications
    ASSERT_EQ(systemText(code), "");
    EXPECT_EQ(textFor(code), "code: 805306352  text: (NULL)");
}

TEST(LastError, ASocketCodeWithoutATextHereIsReportedAllTheSame) {
    const std::string known = systemText(10035);
    if (known.empty())
        EXPECT_EQ(textFor(10035), "code: 10035  text: (NULL)");
    else
        EXPECT_EQ(textFor(10035).find("code: 10035  text: "), 0u);
}

TEST(LastError, ACodeWithTheTopBitIsPrintedNegative) {
    EXPECT_EQ(textFor(0xFFFFFFF0).find("code: -16  text: "), 0u);
}

TEST(LastError, SuccessIsACodeLikeAnyOther) {
    EXPECT_EQ(textFor(ERROR_SUCCESS).find("code: 0  text: "), 0u);
}

TEST(LastError, EveryCodesTextFitsOnOneLineOfAtMost4095Characters) {
    for (DWORD code = 0; code < 2000; ++code) {
        const std::string text = textFor(code);
        EXPECT_LE(text.size(), 4095u) << code;
        EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos) << code;
        // Placeholders as "%2" in a system's text are left as they are.
        const std::string raw = systemText(code);
        EXPECT_EQ(text, "code: " + std::to_string(code) +
                            "  text: " + (raw.empty() ? "(NULL)" : onOneLine(raw)));
    }
}
