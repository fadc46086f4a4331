// Without a file everything goes to the debugger.
#include "DebuggerOutput.h"

#include "TraceFixture.h"

using testing_support::ContextScope;
using testing_support::DebuggerOutput;

namespace {

class WithoutFile : public testing_support::TraceFixture {
protected:
    WithoutFile() { context.openTraceFile(folder.pathOf("no such folder\\x"), "w"); }
};

using Pieces = std::vector<std::string>;

}  // namespace

TEST_F(WithoutFile, EveryPieceOfALineGoesToTheDebuggerSeparately) {
    ContextScope outermost(context, "*\n");
    DebuggerOutput debugger;
    ContextScope scope(context, "scope\n");
    say("x");
    EXPECT_EQ(debugger.pieces(), (Pieces{"1\t", "{ scope\n", "1\t", "   ", "x\n"}));
}

TEST_F(WithoutFile, EveryColumnIsAPieceOfItsOwn) {
    loadSettings("tid\n");
    loadSettings("dt\n");
    loadSettings("tc\n");
    loadSettings("hpc\n");
    DebuggerOutput debugger;
    say("x");
    ASSERT_EQ(debugger.pieces().size(), 6u);
    EXPECT_EQ(debugger.pieces()[0], "1\t");
    EXPECT_EQ(debugger.pieces()[5], "x\n");
    for (int column = 0; column < 5; ++column)
        EXPECT_EQ(debugger.pieces()[static_cast<std::size_t>(column)].back(), '\t');
}

TEST_F(WithoutFile, TheTwoLineFeedsBehindACutMessageAreAPieceOfTheirOwn) {
    DebuggerOutput debugger;
    write("", 4, 0, "%s", std::string(3000, 'm').c_str());
    EXPECT_EQ(debugger.pieces(), (Pieces{"1\t", std::string(2047, 'm'), "\n\n"}));
}

TEST_F(WithoutFile, ASettingsLineIsNotWrittenToTheDebugger) {
    DebuggerOutput debugger;
    loadSettings("tid\n");
    EXPECT_EQ(debugger.pieces(), Pieces());
}

TEST_F(WithoutFile, AnUnwantedLineSendsNothing) {
    loadSettings("ts=0\n");
    DebuggerOutput debugger;
    say("x");
    EXPECT_EQ(debugger.pieces(), Pieces());
}

TEST_F(WithoutFile, NothingGoesToTheDebuggerOnceAFileIsOpen) {
    context.openTraceFile(folder.pathOf("out.log"), "w");
    DebuggerOutput debugger;
    say("x");
    EXPECT_EQ(debugger.pieces(), Pieces());
}
