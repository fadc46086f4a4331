#include "common/Paths.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

using common::directoryOf;
using common::executableDirectory;
using common::resolveAgainstExecutable;
using common::withoutExtension;

namespace {

std::string modulePath() {
    char path[4096] = "";
    GetModuleFileNameA(nullptr, path, sizeof path);
    return path;
}

std::string absolute(const std::string& path) {
    char buffer[4096] = "";
    GetFullPathNameA(path.c_str(), sizeof buffer, buffer, nullptr);
    return buffer;
}

const std::string tooLong(2600, 'x');

}  // namespace

TEST(Paths, TheExecutableDirectoryIsTheModulePathUpToItsLastBackslash) {
    const std::string module = modulePath();
    EXPECT_EQ(executableDirectory(), module.substr(0, module.rfind('\\') + 1));
}

TEST(Paths, TheExecutableDirectoryIsWrittenToABufferThatHoldsItAndToNoOther) {
    const std::string directory = executableDirectory();
    std::string buffer(directory.size() + 1, '?');
    EXPECT_TRUE(common::getExecutableDirectory(&buffer[0], buffer.size()));
    EXPECT_EQ(buffer.c_str(), directory);
    EXPECT_FALSE(common::getExecutableDirectory(&buffer[0], directory.size()));
}

TEST(Paths, APathWithADriveLetterStaysAsItIs) {
    for (const char* path : {"C:\\a\\b.ini", "z:/x/../y", "C:relative.ini", "D:\\"})
        EXPECT_EQ(resolveAgainstExecutable(path), path);
}

TEST(Paths, ARelativePathStandsInTheExecutableDirectory) {
    EXPECT_EQ(resolveAgainstExecutable("q.ini"), executableDirectory() + "q.ini");
    EXPECT_EQ(resolveAgainstExecutable("sub\\q.ini"), executableDirectory() + "sub\\q.ini");
}

TEST(Paths, DotsAndSlashesOfARelativePathAreNormalised) {
    EXPECT_EQ(resolveAgainstExecutable("..\\q.ini"), absolute(executableDirectory() + "..\\q.ini"));
    EXPECT_EQ(resolveAgainstExecutable("sub/./q.ini"), executableDirectory() + "sub\\q.ini");
    EXPECT_EQ(resolveAgainstExecutable("a\\..\\q.ini").find(".."), std::string::npos);
}

TEST(Paths, BlanksInARelativePathStay) {
    EXPECT_EQ(resolveAgainstExecutable("my station\\q 1.ini"),
              executableDirectory() + "my station\\q 1.ini");
}

TEST(Paths, ANetworkPathIsTakenRelativeToo) {
    EXPECT_EQ(resolveAgainstExecutable("\\\\server\\share\\q.ini"),
              executableDirectory() + "server\\share\\q.ini");
}

TEST(Paths, APathThatIsTooLongResolvesToNothing) {
    EXPECT_EQ(resolveAgainstExecutable(tooLong), "");
    EXPECT_EQ(resolveAgainstExecutable(tooLong + "\\q.ini"), "");
}

TEST(Paths, AnEmptyPathIsTheExecutableDirectory) {
    EXPECT_EQ(resolveAgainstExecutable(""), executableDirectory());
}

TEST(Paths, TheDirectoryIsDriveAndFoldersAsTheyStand) {
    EXPECT_EQ(directoryOf("C:\\my station\\tester.exe"), "C:\\my station\\");
    EXPECT_EQ(directoryOf("a/b/c"), "a/b/");
    EXPECT_EQ(directoryOf("\\\\server\\share\\c.exe"), "\\\\server\\share\\");
    EXPECT_EQ(directoryOf("C:c.exe"), "C:");
}

TEST(Paths, ABareFileNameHasNoDirectory) {
    EXPECT_EQ(directoryOf("tester.exe"), "");
    EXPECT_EQ(directoryOf(""), "");
}

TEST(Paths, ADirectoryThatIsTooLongIsEmpty) {
    EXPECT_EQ(directoryOf("C:\\" + tooLong + "\\c.exe"), "");
}

TEST(Paths, OnlyTheLastExtensionOfTheFileNameIsTakenOff) {
    EXPECT_EQ(withoutExtension("C:\\Station\\tester.exe"), "C:\\Station\\tester");
    EXPECT_EQ(withoutExtension("C:\\my.station\\tester"), "C:\\my.station\\tester");
    EXPECT_EQ(withoutExtension("a.b.c"), "a.b");
    EXPECT_EQ(withoutExtension(""), "");
}

TEST(Paths, ALongNameOfUpTo2559CharactersIsKept) {
    const std::string longest(2559, 'n');
    EXPECT_EQ(withoutExtension(longest + ".exe"), longest);
    EXPECT_EQ(withoutExtension(longest + "n.exe"), "");
}
