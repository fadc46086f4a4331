// "qorctl doctor" and the files of exported models, whose paths are the machine's.

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "QorctlProcess.h"
#include "Station.h"

namespace {

const char* const exportFiles[] = {"c:\\qor_exp.sde", "c:\\qor_exp_add.sde"};

class DoctorExports : public testing::Test {
protected:
    Station station{Transport::window};

    DoctorExports() { removeAll(); }
    ~DoctorExports() override { removeAll(); }

    /// How the doctor calls the two files, "ok" or worse; a host would work in any case.
    std::vector<std::string> states() {
        station.writeSettings();
        const auto ended =
            runQorctl({"doctor", station.settingsPath, "--json", "--trace", station.tracePath()});
        EXPECT_EQ(0, ended.exitCode) << ended.out;
        std::vector<std::string> states;
        const auto object = nlohmann::json::parse(ended.out);
        for (const auto& finding : object.at("findings"))
            if (finding.at("id").get<std::string>().find("export.") == 0)
                states.push_back(finding.at("status"));
        return states;
    }

private:
    static void removeAll() {
        for (const char* const path : exportFiles) {
            RemoveDirectoryA(path);
            DeleteFileA(path);
        }
    }
};

TEST_F(DoctorExports, AreNotMadeByTheQuestion) {
    EXPECT_THAT(states(), testing::ElementsAre("ok", "ok"));
    WIN32_FIND_DATAA any = {};
    EXPECT_EQ(INVALID_HANDLE_VALUE, FindFirstFileA("c:\\qor_exp*", &any)) << any.cFileName;
}

TEST_F(DoctorExports, KeepWhatTheyHold) {
    for (const char* const path : exportFiles) std::ofstream(path) << "of the last model";
    EXPECT_THAT(states(), testing::ElementsAre("ok", "ok"));
    for (const char* const path : exportFiles) EXPECT_EQ("of the last model", bytesOfFile(path));
}

TEST_F(DoctorExports, ThatCannotBeWrittenAreAWarning) {
    CreateDirectoryA(exportFiles[0], nullptr);
    EXPECT_THAT(states(), testing::ElementsAre("warning", "ok"));
}

}  // namespace
