// What QorControlC.dll hands out: the functions of its header, one for each operation.

#include <gmock/gmock.h>
#include <windows.h>

#include <cctype>
#include <regex>

#include "facade/channel/OperationTable.h"
#include "ModuleExports.h"
#include "QorControl.h"
#include "support/TempFolder.h"

using testing::Contains;
using testing::UnorderedElementsAreArray;

namespace {

std::vector<std::string> exportedNames() {
    EXPECT_EQ(unsigned{QOR_VERSION}, QorVersion());  // the library must be loaded
    EXPECT_STREQ(QOR_VERSION_TEXT, QorVersionText());
    return namesExportedBy("QorControlC.dll");
}

std::vector<std::string> functionsOfHeader() {
    const std::string header = bytesOfFile(C_HEADER);
    static const std::regex function("QOR_CALL (Qor\\w+)\\(");
    std::vector<std::string> names;
    for (std::sregex_iterator found(header.begin(), header.end(), function), end; found != end;
         ++found)
        names.push_back((*found)[1]);
    return names;
}

TEST(CExports, AreTheFunctionsOfTheHeaderByTheirPlainNames) {
    EXPECT_EQ(57u, functionsOfHeader().size());
    EXPECT_THAT(exportedNames(), UnorderedElementsAreArray(functionsOfHeader()));
}

TEST(CExports, HaveOneForEachOperationOfTheTable) {
    const auto exported = exportedNames();
    for (const channel::OperationRow& row : channel::operations) {
        std::string name = row.name;
        name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
        EXPECT_THAT(exported, Contains("Qor" + name));
    }
}

TEST(CExports, CauseNamesAreThoseOfTheHeader) {
    const std::string header = bytesOfFile(C_HEADER);
    static const std::regex cause("#define (QOR_\\w+) (\\d+) +/\\*\\*<");
    const std::string causes = header.substr(
        header.find("@name Causes"), header.find("@name Special") - header.find("@name Causes"));
    int count = 0;
    for (std::sregex_iterator found(causes.begin(), causes.end(), cause), end; found != end;
         ++found, ++count)
        EXPECT_EQ((*found)[1], QorCauseName(std::stoi((*found)[2])));
    EXPECT_EQ(23, count);
    EXPECT_STREQ("unknown", QorCauseName(23));
    EXPECT_STREQ("unknown", QorCauseName(-1));
}

}  // namespace
