// The text of a line itself.
#include "TraceFixture.h"

namespace {

class Message : public testing_support::TraceFixture {};

std::string ofLength(std::size_t length) {
    std::string text = "begin";
    text.resize(length, '.');
    text.back() = '$';
    return text;
}

}  // namespace

TEST_F(Message, IsFormattedWithItsValues) {
    write("", 2, 0, "OK on get: %s [%s], t: %d ms\n", "nEng", "1.5", 12);
    EXPECT_EQ(output(), "2\tOK on get: nEng [1.5], t: 12 ms\n");
}

TEST_F(Message, Of2047CharactersIsWrittenWhole) {
    const std::string text = ofLength(2047);
    write("", 4, 0, "%s", text.c_str());
    EXPECT_EQ(output(), "1\t" + text);
}

TEST_F(Message, LongerThan2047CharactersIsWrittenCutFollowedByTwoLineFeeds) {
    for (const std::size_t length : {2048u, 2049u, 100000u}) {
        context.openTraceFile(folder.pathOf(std::to_string(length)), "w");
        const std::string text = ofLength(length);
        write("", 4, 0, "%s", text.c_str());
        EXPECT_EQ(folder.readText(std::to_string(length)), "1\t" + text.substr(0, 2047) + "\n\n");
    }
}

TEST_F(Message, ALineAfterACutOneIsWhole) {
    write("", 4, 0, "%s", ofLength(5000).c_str());
    const std::size_t before = output().size();
    say("next");
    EXPECT_EQ(output().substr(before), "1\tnext\n");
}

TEST_F(Message, APercentSignInHostTextIsPrintedAsItIs) {
    say("100% %s %n %d %%");
    EXPECT_EQ(output(), "1\t100% %s %n %d %%\n");
}

TEST_F(Message, APercentSignInAScopeTitleIsPrintedAsItIs) {
    testing_support::ContextScope outermost(context, "*\n");
    { testing_support::ContextScope scope(context, "50% %s\n"); }
    EXPECT_EQ(output(), "1\t{ 50% %s\n1\t} 50% %s\n");
}

TEST_F(Message, AnEmptyMessageIsJustTheColumns) {
    write("", 1, 0, "%s", "");
    EXPECT_EQ(output(), "3\t");
}
