#include "doctor/CodePageCheck.h"

#include <gmock/gmock.h>

#include "Found.h"
#include "support/TempFolder.h"

using namespace qorctl::doctor;
using testing::ElementsAre;

namespace {

constexpr unsigned western = 1252;

class CodePageCheck : public testing::Test {
protected:
    TempFolder folder;

    SettingsFacts factsOf(const std::string& executable) {
        return SettingsFacts::read(
            folder.write("qor.ini", "[CommonSettings]\r\nQORexecutable=" + executable + "\r\n"));
    }
};

TEST_F(CodePageCheck, PlainAndWesternTextsSurvive) {
    EXPECT_THAT(idsOf(checkCodePage(western, factsOf("c:\\q.exe"))), ElementsAre("codepage"));
    EXPECT_THAT(idsOf(checkCodePage(western, factsOf("c:\\pr\xFC"
                                                     "f\\q.exe"))),
                ElementsAre("codepage"));
}

TEST_F(CodePageCheck, Utf8InAnAnsiFileIsAWarning) {
    const auto facts = factsOf(
        "c:\\pr\xC3\xBC"
        "f\\q.exe");
    EXPECT_EQ(Status::warning,
              found(checkCodePage(western, facts), "codepage.QORexecutable").status);
    EXPECT_THAT(idsOf(checkCodePage(65001, facts)), ElementsAre("codepage"));
}

// A wide file, as some editors save it, can hold what no code page of one byte has.
TEST_F(CodePageCheck, CharactersThatTheCodePageLacksAreAProblem) {
    const std::wstring wide =
        L"\xFEFF[CommonSettings]\r\nQORexecutable=c:\\\x4E2D\\q.exe\r\nUseTcp=true\r\n";
    const std::string path = folder.write(
        "wide.ini", std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * 2));
    const auto facts = SettingsFacts::read(path);
    ASSERT_TRUE(facts.usesTcp());
    EXPECT_TRUE(facts["QORexecutable"].losesCharacters);
    EXPECT_EQ(Status::problem,
              found(checkCodePage(western, facts), "codepage.QORexecutable").status);
    EXPECT_FALSE(facts["UseTcp"].losesCharacters);
}

TEST_F(CodePageCheck, APathThatLostCharactersIsAProblem) {
    SettingsFacts facts = factsOf("c:\\q.exe");
    facts.path = "c:\\??\\qor.ini";
    EXPECT_EQ(Status::problem, found(checkCodePage(western, facts), "codepage.path").status);
}

TEST_F(CodePageCheck, OnlyWholeCharactersLookLikeUtf8) {
    EXPECT_TRUE(looksLikeUtf8("\xC3\xBC"));
    EXPECT_TRUE(looksLikeUtf8("a\xE4\xB8\xAD"));
    for (const char* const text : {"", "plain", "\xFC", "\xC3", "\xC3x", "\xC0\x80", "\xE4\xB8"})
        EXPECT_FALSE(looksLikeUtf8(text)) << text;
}

}  // namespace
