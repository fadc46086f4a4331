// Opening a model, and the files that QOR exports of it.

#include <gmock/gmock.h>

#include "Models.h"
#include "QorProcesses.h"
#include "Station.h"
#include "Waiting.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr char exported[] = "c:\\qor_exp.sde";
constexpr char addExported[] = "c:\\qor_exp_add.sde";
constexpr unsigned amply = 10000;

/// What QOR's stand-in writes into an export file.
std::string exportBytes(std::size_t count) {
    std::string bytes(count, '\0');
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>((31 * i + i / 251) % 256);
    return bytes;
}

class Model : public testing::TestWithParam<Transport> {
protected:
    Model() {
        DeleteFileA(exported);
        DeleteFileA(addExported);
    }
    ~Model() override {
        DeleteFileA(exported);
        DeleteFileA(addExported);
    }

    Station station{GetParam()};

    /// A model whose export files have these sizes; less than 0: there is no such file.
    bool startExporting(int bytes, int addBytes) {
        station.settings.model =
            station.folder.write("model.json", modelExporting(bytes, addBytes));
        return station.start();
    }
    bool open(unsigned modelType = 1) {
        return station->openModel(
            {modelType, "engine.sdm", 4, "engine.hex", 5, "", 6, {{"b", "2"}, {"a", "1"}}});
    }
    static bool holdsExport(const char* path, std::size_t count) {
        return eventually(amply, [&] { return bytesOfFile(path) == exportBytes(count); });
    }
    bool sourcesAreGone() {
        return eventually(amply, [&] {
            for (const auto& entry : std::filesystem::directory_iterator(station.folder.path()))
                if (entry.path().filename().string().rfind("export-", 0) == 0) return false;
            return true;
        });
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Model, everyTransport(), transportName);

TEST_P(Model, QorEndsItsWorkWithTheEcuBeforeItOpensAModel) {
    ASSERT_TRUE(startExporting(-1, -1));
    ASSERT_TRUE(station.connectEcu());
    const std::size_t records = station.wire().size();
    const std::size_t traced = station.trace().size();
    ASSERT_TRUE(open());
    EXPECT_THAT(station.trace(traced),
                ElementsAre("1\tOpening model = 'engine.sdm', hex = 'engine.hex', csv = ''"));
    EXPECT_THAT(station.logLines(), Contains("info: OPEN-model(engine.sdm): ['engine.hex' '']"));
    ASSERT_TRUE(station->pingQor(amply));
    EXPECT_THAT(
        station.requests(records),
        ElementsAre("KwpConnect protocol=0 1 1 10400 125000 period=0 mode=0 FFFFFFFF FFFFFFFF 255 "
                    "255 255 0 1 '' 1",
                    "Shutdown 2",
                    "StartEdit stage=7 mode=1 'engine.sdm' 4 ['engine.hex'][5] [][] ['a':'1' "
                    "'b':'2']",
                    "Ping 0"));
    EXPECT_FALSE(station->isEcuOnline());
    EXPECT_EQ(1u, qor::running().size());
}

TEST_P(Model, TheEcuStaysOfflineUntilItIsConnectedAnew) {
    ASSERT_TRUE(startExporting(-1, -1));
    ASSERT_TRUE(station->connect(usualConnect(), QorControlFacade::EcuConnect::Default, nullptr));
    ASSERT_TRUE(eventually(amply, [&] { return station->isEcuOnline(); }));
    ASSERT_TRUE(open());
    ASSERT_TRUE(station->pingQor(amply));
    EXPECT_FALSE(station->isEcuOnline());
    EXPECT_FALSE(eventually(1000, [&] { return station->isEcuOnline(); }));
    ASSERT_TRUE(station.connectEcu());
    EXPECT_TRUE(station->isEcuOnline());
}

TEST_P(Model, IsOpenedAllTheSameWhenTheShutdownIsNotTakenWhichIsTraced) {
    station.script = R"({"rules":[{"match":{"id":4,"operation":2},"action":)" +
                     silence(GetParam(), 6000) + "}]}";
    ASSERT_TRUE(startExporting(-1, -1));
    ASSERT_TRUE(station->openModel({1, "engine.sdm", 0, "", 0, "", 0, {}}));
    EXPECT_TRUE(eventually(9000, [&] { return station.traceHolds("3\tFailed to shutdown QOR"); }));
    ASSERT_TRUE(station->pingQor(15000));
    EXPECT_THAT(station.requests(), Contains(HasSubstr("StartEdit stage=7 mode=1 'engine.sdm'")));
}

TEST_P(Model, ModelTypesTravelAsModes) {
    ASSERT_TRUE(startExporting(-1, -1));
    const std::pair<unsigned, const char*> modes[] = {
        {0, " mode=1 "}, {2, " mode=2 "}, {5, " mode=5 "}, {6, " mode=2 "}, {7, " mode=1 "}};
    for (const auto& mode : modes) {
        const std::size_t records = station.wire().size();
        ASSERT_TRUE(open(mode.first));
        ASSERT_TRUE(station->pingQor(amply));
        EXPECT_THAT(station.requests(records), Contains(HasSubstr(mode.second))) << mode.first;
    }
}

TEST_P(Model, AnExportFileArrivesWholeAndItsSourceIsGone) {
    ASSERT_TRUE(startExporting(150000, 4096));
    ASSERT_TRUE(open());
    EXPECT_TRUE(holdsExport(exported, 150000));
    EXPECT_TRUE(holdsExport(addExported, 4096));
    EXPECT_TRUE(sourcesAreGone());
}

TEST_P(Model, AnExportFileOfTheGreatestSizeArrivesWhole) {
    ASSERT_TRUE(startExporting(200000, -1));
    ASSERT_TRUE(open());
    EXPECT_TRUE(holdsExport(exported, 200000));
    EXPECT_TRUE(sourcesAreGone());
    EXPECT_FALSE(fileExists(addExported));
}

TEST_P(Model, ALargerExportFileIsCut) {
    ASSERT_TRUE(startExporting(250000, -1));
    ASSERT_TRUE(open());
    EXPECT_TRUE(holdsExport(exported, 200000));
    EXPECT_TRUE(sourcesAreGone());
}

TEST_P(Model, AnEmptyExportFileReplacesAnOldOne) {
    std::ofstream(addExported) << "old";
    ASSERT_TRUE(startExporting(-1, 0));
    ASSERT_TRUE(open());
    EXPECT_TRUE(holdsExport(addExported, 0));
    EXPECT_TRUE(sourcesAreGone());
    EXPECT_FALSE(fileExists(exported));
}

TEST_P(Model, AnEmptyExportFileOfTheModelItselfReplacesAnOldOne) {
    std::ofstream(exported) << "old";
    ASSERT_TRUE(startExporting(0, -1));
    ASSERT_TRUE(open());
    EXPECT_TRUE(holdsExport(exported, 0));
    EXPECT_TRUE(sourcesAreGone());
    EXPECT_FALSE(fileExists(addExported));
}

TEST_P(Model, AnAdditionalExportFileLeavesTheOtherTargetUntouched) {
    std::ofstream(exported) << "untouched";
    ASSERT_TRUE(startExporting(-1, 250000));
    ASSERT_TRUE(open());
    EXPECT_TRUE(holdsExport(addExported, 200000));
    EXPECT_TRUE(sourcesAreGone());
    EXPECT_EQ("untouched", bytesOfFile(exported));
}

TEST_P(Model, ARefusedShutdownIsTracedAndTheModelIsOpenedAllTheSame) {
    station.script = R"({"rules":[{"match":{"id":4,"operation":2},"action":{"answer":"refuse"}}]})";
    ASSERT_TRUE(startExporting(1000, -1));
    ASSERT_TRUE(open());
    EXPECT_TRUE(holdsExport(exported, 1000));
    EXPECT_TRUE(station.traceHolds("3\tFailed to shutdown QOR"));
}

}  // namespace
