// The trace of a process that has no memory left. The last lines of such a process are those that
// tell why it failed; and a line must not throw, for it is also written by destructors.
#include <regex>

#include "DebuggerOutput.h"
#include "NoMemory.h"
#include "TraceFixture.h"

using testing_support::ContextScope;
using testing_support::DebuggerOutput;
using testing_support::MemoryExhausted;
using testing_support::NoMemory;

namespace {

std::int64_t now = 0;

/// Whether `action` neither asks for memory nor throws.
template <class Action>
testing::AssertionResult needsNoMemory(const Action& action) {
    bool hasThrown = false;
    int refusals = 0;
    {
        const NoMemory none;
        try {
            action();
        } catch (const std::bad_alloc&) {
            hasThrown = true;
        }
        refusals = none.refusals();
    }
    if (hasThrown) return testing::AssertionFailure() << "it threw for want of memory";
    if (refusals != 0) return testing::AssertionFailure() << "it asked for memory";
    return testing::AssertionSuccess();
}

class WithoutMemory : public testing_support::TraceFixture {
protected:
    WithoutMemory() {
        now = 1000;
        context.secondsNow = [] { return now; };
    }

    const std::string other = folder.pathOf("a file with a rather long name.log");
};

struct Column {
    const char* name;
    const char* settings;
    const char* line;

    friend void PrintTo(const Column& column, std::ostream* out) { *out << column.settings; }
};

class ColumnWithoutMemory : public WithoutMemory, public testing::WithParamInterface<Column> {};

const char* const dateText = "[ 0-9][0-9]/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\t";

INSTANTIATE_TEST_SUITE_P(
    Each, ColumnWithoutMemory,
    testing::Values(
        Column{"Category", "tl=255\n", "ts \n2\tt: 5 ms\n"},
        Column{"Thread", "tid\n", "ts tid \n2\t[0-9A-F]+\tt: 5 ms\n"},
        Column{"Date", "dt\n", "ts dt \n2\t[ 0-9/]{8} [0-9:]{8}\tt: 5 ms\n"},
        Column{"Tick", "tc\n", "ts tc \n2\t[0-9A-F]{8}\tt: 5 ms\n"},
        Column{"HighResolution", "hpc\n", "ts hpc \n2\t +0\tt: 5 ms\n"},
        Column{"All", "hpc\ntc\ndt\ntid\n",
               "ts tid dt tc hpc \n2\t[0-9A-F]+\t[ 0-9/]{8} [0-9:]{8}\t[0-9A-F]{8}\t +0\tt: 5 "
               "ms\n"}),
    [](const auto& column) { return std::string(column.param.name); });

}  // namespace

TEST_P(ColumnWithoutMemory, IsWritten) {
    loadSettings(GetParam().settings);
    EXPECT_TRUE(needsNoMemory([&] { write("", 2, 0, "t: %d ms\n", 5); }));
    EXPECT_TRUE(std::regex_match(output(), std::regex(GetParam().line))) << output();
}

TEST_F(WithoutMemory, ADeepIndentationIsWritten) {
    const ContextScope outermost(context, "*\n");
    const ContextScope a(context, "a\n"), b(context, "b\n"), c(context, "c\n"), d(context, "d\n"),
        e(context, "e\n"), f(context, "f\n");
    context.openTraceFile(other, "w");
    EXPECT_TRUE(needsNoMemory([&] { write("", 2, 0, "x\n"); }));
    EXPECT_EQ(folder.readText("a file with a rather long name.log"),
              "2\t" + std::string(18, ' ') + "x\n");
}

TEST_F(WithoutMemory, AMessageThatIsTooLongIsCut) {
    const std::string text(5000, 'm');
    EXPECT_TRUE(needsNoMemory([&] { write("", 2, 0, "%s", text.c_str()); }));
    EXPECT_EQ(output(), "2\t" + std::string(2047, 'm') + "\n\n");
}

TEST_F(WithoutMemory, AScopeWritesBothItsLines) {
    loadSettings("dt\n");
    const ContextScope outermost(context, "*\n");
    EXPECT_TRUE(needsNoMemory([&] {
        bool savedEnabled = false;
        const bool isNested = context.enterScope("", "scope\n", savedEnabled);
        context.leaveScope("", isNested ? "scope\n" : nullptr, savedEnabled);
    }));
    const std::regex lines(std::string("ts dt \n1\t") + dateText + "\\{ scope\n1\t" + dateText +
                           "\\} scope\n");
    EXPECT_TRUE(std::regex_match(output(), lines)) << output();
}

TEST_F(WithoutMemory, ALongModuleNameIsFoundOnTheLists) {
    loadSettings("include=aModuleWithALongName,anotherOneWithALongName\n");
    EXPECT_TRUE(needsNoMemory([&] {
        write("ANOTHERONEWITHALONGNAME", 2, 0, "x\n");
        write("aModuleThatIsNotListed", 2, 0, "y\n");
    }));
    EXPECT_EQ(output(), "ts \n2\tx\n");
}

TEST_F(WithoutMemory, ARefreshTakesUpTheNewSettings) {
    loadSettings("tfr=10\n");
    folder.writeText("trace.cfg",
                     "tfr=10 # and a long line\ninclude=aModuleWithALongName\nnid\nhpc\n");
    now += 10;
    EXPECT_TRUE(needsNoMemory([&] {
        write("aModuleWithALongName", 2, 0, "x\n");
        write("aModuleThatIsNotListed", 2, 0, "y\n");
    }));
    EXPECT_EQ(output(), "ts \n2\t       0\tx\n");
}

TEST_F(WithoutMemory, ARefreshOpensAnotherTraceFile) {
    loadSettings("tfr=10\n");
    folder.writeText("trace.cfg", "tfr=10\ntf=" + other + ", w\ntc\ndt\ntid\nhpc\n");
    now += 10;
    EXPECT_TRUE(needsNoMemory([&] { write("", 2, 0, "x\n"); }));
    EXPECT_EQ(folder.readText("a file with a rather long name.log").substr(0, 18),
              "ts tid dt tc hpc \n");
    EXPECT_EQ(output(), "ts \n");
}

TEST_F(WithoutMemory, SettingsAreLoaded) {
    const std::string settings =
        folder.writeText("trace.cfg", "ts=1 # errors only, nothing else\n");
    EXPECT_TRUE(needsNoMemory([&] { context.loadSettings(settings.c_str()); }));
    write("", 2, 0, "x\n");
    write("", 1, 0, "y\n");
    EXPECT_EQ(output(), "ts \n3\ty\n");
}

TEST_F(WithoutMemory, ATraceFileIsOpened) {
    const std::string path = folder.pathOf("a file with a rather long name.log");
    EXPECT_TRUE(needsNoMemory([&] { context.openTraceFile(path.c_str(), "w"); }));
    say("x");
    EXPECT_EQ(folder.readText("a file with a rather long name.log"), "1\tx\n");
}

TEST_F(WithoutMemory, ABareNameMeansTheExecutableFolder) {
    const std::string name = "a name of this process " + std::to_string(GetCurrentProcessId());
    EXPECT_TRUE(needsNoMemory([&] { context.openTraceFile(name.c_str(), "w"); }));
    say("x");
    context.openTraceFile(folder.pathOf("out.log"), "a");
    char program[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, program, sizeof program);
    EXPECT_TRUE(std::filesystem::remove(std::filesystem::path(program).replace_filename(name)));
}

TEST_F(WithoutMemory, LinesGoToTheDebuggerWhenTheFileCannotBeOpened) {
    const std::string path = folder.pathOf("no such folder\\x.log");
    const DebuggerOutput debugger;
    const auto outcome = needsNoMemory([&] {
        context.openTraceFile(path.c_str(), "w");
        write("", 2, 0, "t: %d ms\n", 5);
    });
    // Before GoogleTest tells the debugger something, too.
    const std::string sent = debugger.text();
    EXPECT_TRUE(outcome);
    EXPECT_EQ(sent, "2\tt: 5 ms\n");
}

TEST_F(WithoutMemory, TheProcessTraceOpensReadsAndWrites) {
    const std::string settings = folder.writeText("trace.cfg", "tl=255 # as it is without any\n");
    EXPECT_TRUE(needsNoMemory([&] {
        tracelog::openTraceFile(other.c_str(), "w");
        tracelog::loadSettings(settings.c_str());
        const tracelog::Scope scope(tracelog::libraryModule, "a scope with a rather long title\n");
        tracelog::trace(tracelog::libraryModule, tracelog::error, 0, "%s", "x\n");
    }));
    // Neither exists: this closes both files, so that the folder can go.
    tracelog::loadSettings(folder.pathOf("no such folder\\x").c_str());
    tracelog::openTraceFile(folder.pathOf("no such folder\\x").c_str(), "w");
    EXPECT_EQ(folder.readText("a file with a rather long name.log"),
              "ts \n1\t{ a scope with a rather long title\n3\t   x\n"
              "1\t} a scope with a rather long title\n");
}

TEST_F(WithoutMemory, AFreshFileTakesLinesWhenTheProcessHasNothingLeftAtAll) {
    loadSettings("dt\ntc\ntid\n");
    context.openTraceFile(other, "w");
    {
        const MemoryExhausted everything;
        for (int i = 0; i < 3; ++i) write("", 2, 0, "line %d\n", i);
    }
    const std::string columns = std::string("2\t[0-9A-F]+\t") + dateText + "[0-9A-F]{8}\tline ";
    const std::regex lines(columns + "0\n" + columns + "1\n" + columns + "2\n");
    const std::string written = folder.readText("a file with a rather long name.log");
    EXPECT_TRUE(std::regex_match(written, lines)) << written;
}
