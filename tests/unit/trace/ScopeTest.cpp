// Scopes: their lines, the indentation, and the outermost one that closes everything.
#include "TraceFixture.h"
#include "unit/common/TestThread.h"

using testing_support::ContextScope;

namespace {

class ScopeLines : public testing_support::TraceFixture {};

}  // namespace

TEST_F(ScopeLines, TheOutermostScopeWritesNothingAndDoesNotIndent) {
    ContextScope outermost(context, "*\n");
    say("x");
    EXPECT_EQ(output(), "1\tx\n");
}

TEST_F(ScopeLines, NestedScopesIndentByThreeBetweenTheirLines) {
    ContextScope outermost(context, "*\n");
    {
        ContextScope first(context, "first\n");
        say("a");
        {
            ContextScope second(context, "second\n");
            say("b");
        }
        say("c");
    }
    say("d");
    EXPECT_EQ(output(),
              "1\t{ first\n"
              "1\t   a\n"
              "1\t   { second\n"
              "1\t      b\n"
              "1\t   } second\n"
              "1\t   c\n"
              "1\t} first\n"
              "1\td\n");
}

TEST_F(ScopeLines, NidTurnsTheIndentationOffAndKeepsTheLines) {
    loadSettings("nid\n");
    ContextScope outermost(context, "*\n");
    {
        ContextScope scope(context, "scope\n");
        say("x");
    }
    EXPECT_EQ(output(), "ts \n1\t{ scope\n1\tx\n1\t} scope\n");
}

TEST_F(ScopeLines, AreInformationOfVerbosity0) {
    loadSettings("ts=3\n");
    ContextScope outermost(context, "*\n");
    {
        ContextScope scope(context, "scope\n");
        write("", 2, 0, "x\n");
    }
    EXPECT_EQ(output(), "ts \n2\t   x\n");
}

TEST_F(ScopeLines, DepthIsSharedByAllThreads) {
    ContextScope outermost(context, "*\n");
    ContextScope scope(context, "scope\n");
    testing_support::TestThread([&] { say("other"); }).join();
    EXPECT_EQ(output(), "1\t{ scope\n1\t   other\n");
}

TEST_F(ScopeLines, TheEndOfTheOutermostScopeClosesTheFiles) {
    loadSettings("tfr=1\n");
    { ContextScope outermost(context, "*\n"); }
    std::error_code error;
    EXPECT_TRUE(std::filesystem::remove(folder.pathOf("out.log"), error)) << error.message();
    EXPECT_TRUE(std::filesystem::remove(folder.pathOf("trace.cfg"), error)) << error.message();
}

TEST_F(ScopeLines, ATraceThatWasClosedCanBeUsedAgain) {
    { ContextScope outermost(context, "*\n"); }
    say("to the debugger");
    context.openTraceFile(folder.pathOf("out.log"), "a");
    ContextScope outermost(context, "*\n");
    say("x");
    EXPECT_EQ(output(), "1\tx\n");
}

TEST_F(ScopeLines, TheFilesStayOpenUntilTheLastOfSeveralScopesEnds) {
    ContextScope outermost(context, "*\n");
    for (int i = 0; i < 3; ++i) ContextScope scope(context, "scope\n");
    say("x");
    EXPECT_NE(output().find("1\tx\n"), std::string::npos);
}
