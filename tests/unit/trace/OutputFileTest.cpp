// Which file the trace goes to, and its first line.
#include "DebuggerOutput.h"
#include "TraceFixture.h"

using testing_support::DebuggerOutput;

namespace {

class OutputFile : public testing_support::TraceFixture {};

std::string executableFolder() {
    char path[4096] = "";
    GetModuleFileNameA(nullptr, path, sizeof path);
    return std::string(path).substr(0, std::string(path).rfind('\\') + 1);
}

}  // namespace

TEST_F(OutputFile, OpeningTheSamePathAgainKeepsTheFile) {
    say("a");
    context.openTraceFile(folder.pathOf("out.log"), "w");
    say("b");
    EXPECT_EQ(output(), "1\ta\n1\tb\n");
}

TEST_F(OutputFile, ModeWTruncatesAndModeAAppends) {
    say("a");
    context.openTraceFile(folder.pathOf("other.log"), "w");
    context.openTraceFile(folder.pathOf("out.log"), "a");
    say("b");
    EXPECT_EQ(output(), "1\ta\n1\tb\n");
    context.openTraceFile(folder.pathOf("other.log"), "w");
    context.openTraceFile(folder.pathOf("out.log"), "w");
    EXPECT_EQ(output(), "");
}

TEST_F(OutputFile, AnotherPathClosesTheFileBefore) {
    say("a");
    context.openTraceFile(folder.pathOf("other.log"), "w");
    say("b");
    EXPECT_EQ(output(), "1\ta\n");
    EXPECT_EQ(folder.readText("other.log"), "1\tb\n");
    EXPECT_TRUE(std::filesystem::remove(folder.pathOf("out.log")));
}

TEST_F(OutputFile, AFileThatCannotBeOpenedIsLeftOutForTheDebugger) {
    DebuggerOutput debugger;
    context.openTraceFile(folder.pathOf("no such folder\\x.log"), "w");
    say("x");
    EXPECT_EQ(debugger.text(), "1\tx\n");
    EXPECT_EQ(output(), "") << "the old file is closed all the same";
}

TEST_F(OutputFile, APathThatFailedIsTriedAgain) {
    const std::string path = folder.pathOf("sub") + "\\x.log";
    context.openTraceFile(path, "w");
    std::filesystem::create_directory(folder.pathOf("sub"));
    context.openTraceFile(path, "w");
    say("x");
    EXPECT_EQ(folder.readText("sub\\x.log"), "1\tx\n");
    context.openTraceFile(folder.pathOf("out.log"), "a");
}

TEST_F(OutputFile, OthersReadTheFileWhileItIsOpenAndSeeEveryLineAtOnce) {
    say("x");
    const HANDLE file =
        CreateFileA(folder.pathOf("out.log").c_str(), GENERIC_READ,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    char text[20] = "";
    DWORD bytes = 0;
    EXPECT_TRUE(ReadFile(file, text, sizeof text, &bytes, nullptr));
    CloseHandle(file);
    EXPECT_EQ(std::string(text, bytes), "1\tx\r\n");
}

TEST_F(OutputFile, ABareNameMeansTheExecutableFolder) {
    const std::string name = "q" + std::to_string(GetCurrentProcessId()) + ".log";
    context.openTraceFile(name, "w");
    say("x");
    context.openTraceFile(folder.pathOf("out.log"), "w");
    EXPECT_TRUE(std::filesystem::remove(executableFolder() + name));
}

TEST_F(OutputFile, ABareSettingsNameMeansTheExecutableFolder) {
    const std::string name = "q" + std::to_string(GetCurrentProcessId()) + ".cfg";
    std::ofstream(executableFolder() + name) << "tc\n";
    context.loadSettings(name);
    EXPECT_EQ(output(), "ts tc \n");
    context.loadSettings(folder.pathOf("none.cfg"));  // closes the file
    EXPECT_TRUE(std::filesystem::remove(executableFolder() + name));
}

TEST_F(OutputFile, AFileOpenedAfterTheSettingsWereReadGetsNoSettingsLine) {
    loadSettings("tl=255\n");
    context.openTraceFile(folder.pathOf("host.log"), "w");
    testing_support::ContextScope outermost(context, "*\n");
    { testing_support::ContextScope scope(context, "QorControlFacade::QorControlFacade()\n"); }
    EXPECT_EQ(folder.readText("host.log").find("1\t{ QorControlFacade::QorControlFacade()\n"), 0u);
}

TEST_F(OutputFile, AFileNamedInTheSettingsGetsTheSettingsLineAtOnce) {
    loadSettings("tf=" + folder.pathOf("named.log") + "\n");
    EXPECT_EQ(folder.readText("named.log"), "ts \n");
    say("x");
    EXPECT_EQ(folder.readText("named.log"), "ts \n1\tx\n");
    EXPECT_EQ(output(), "");
}

TEST_F(OutputFile, TheSettingsLineIsWrittenOncePerFile) {
    loadSettings("tid\n");
    loadSettings("tc\n");
    EXPECT_EQ(output(), "ts tid \n");
    context.openTraceFile(folder.pathOf("other.log"), "w");
    loadSettings("tc\n");
    EXPECT_EQ(folder.readText("other.log"), "ts tid tc \n");
}

TEST_F(OutputFile, TheSettingsLineNamesSwitchesThatStandBehindTheFileToo) {
    loadSettings("tf=" + folder.pathOf("named.log") + "\nhpc\n");
    EXPECT_EQ(folder.readText("named.log"), "ts hpc \n");
}

TEST_F(OutputFile, ASettingsFileThatIsNotThereChangesNothing) {
    context.loadSettings(folder.pathOf("none.cfg"));
    say("x");
    EXPECT_EQ(output(), "1\tx\n");
}

TEST_F(OutputFile, ALineOfMoreThan2047CharactersIsReadInPieces) {
    loadSettings(std::string(2046, '.') + "tid\n");
    say("x");
    // The keyword is split after its first letter: neither piece holds it.
    EXPECT_EQ(output(), "ts \n1\tx\n");
}
