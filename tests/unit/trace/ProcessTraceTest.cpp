// The one trace of the process, as the library uses it.
#include "TraceFixture.h"

namespace {

class ProcessTrace : public testing::Test {
protected:
    ProcessTrace() { tracelog::openTraceFile(folder_.pathOf("out.log").c_str(), "w"); }
    // The path does not exist: this closes the file, so that the folder can go.
    ~ProcessTrace() override {
        tracelog::openTraceFile(folder_.pathOf("no such folder\\x").c_str(), "w");
    }

    std::string output() const { return folder_.readText("out.log"); }

    testing_support::PlainFolder folder_;
};

}  // namespace

TEST_F(ProcessTrace, HasAnOutermostScopeFromTheBeginningSoThatAllOthersWriteTheirLines) {
    {
        const tracelog::Scope scope(tracelog::libraryModule, "scope\n");
        tracelog::trace(tracelog::libraryModule, tracelog::warning, 0, "t: %d ms\n", 5);
    }
    EXPECT_EQ(output(), "1\t{ scope\n2\t   t: 5 ms\n1\t} scope\n");
}

TEST_F(ProcessTrace, KeepsItsFileOpenBetweenScopes) {
    { const tracelog::Scope scope("", "first\n"); }
    { const tracelog::Scope scope("", "second\n"); }
    EXPECT_EQ(output(), "1\t{ first\n1\t} first\n1\t{ second\n1\t} second\n");
}

TEST_F(ProcessTrace, ASecondOpeningOfTheSamePathGoesOnInTheFile) {
    tracelog::trace("", tracelog::error, 0, "first run\n");
    tracelog::openTraceFile(folder_.pathOf("out.log").c_str(), "w");
    tracelog::trace("", tracelog::error, 0, "second run\n");
    EXPECT_EQ(output(), "3\tfirst run\n3\tsecond run\n");
}

TEST_F(ProcessTrace, ReadsSettingsThatDoNotExistWithoutAWord) {
    tracelog::loadSettings(folder_.pathOf("none.cfg").c_str());
    tracelog::trace("", tracelog::information, 0, "x\n");
    EXPECT_EQ(output(), "1\tx\n");
}
