// The whole way of a test station: what an end-of-line program does from start to end.

#include <gmock/gmock.h>

#include "qorcontrol/LibraryVersion.h"
#include "QorProcesses.h"
#include "Station.h"
#include "Waiting.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr unsigned amply = 3000;

class Tour : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    std::vector<double> values, second, third;

    void describeAndRead() {
        wex::ParamDescription description = {};
        ASSERT_TRUE(station->getParamDescription("IgnitionMap", description));
        EXPECT_TRUE(description.threeArrays);
        ASSERT_TRUE(station->getParamData("IgnitionMap", values, second, third, amply));
        EXPECT_THAT(values, SizeIs(48));
        EXPECT_THAT(second, SizeIs(8));
        EXPECT_THAT(third, SizeIs(6));
        ASSERT_TRUE(station->getParamData("PedalCurve", values, second, third, amply));
        EXPECT_THAT(values, SizeIs(6));
        EXPECT_THAT(second, SizeIs(6));
        EXPECT_THAT(third, IsEmpty());
        std::string text;
        ASSERT_TRUE(station->getParamDataAsString("EcuSerialNumber", text, amply));
        EXPECT_EQ("EC0417-000293", text);
    }
    void expectLimit(double limit) {
        ASSERT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
        EXPECT_THAT(values, ElementsAre(limit));
    }
    void writeAndReadBack() {
        expectLimit(6500);
        ASSERT_TRUE(station->setParamData("MaxEngineSpeed", {7000}, {}, {}, amply));
        expectLimit(7000);
    }
    void changePages() {
        ASSERT_TRUE(
            station->setEcuSegment(QorControlFacade::getEdcRomSegmentName(), false, nullptr));
        expectLimit(6500);
        ASSERT_TRUE(station->setEcuSegment(QorControlFacade::getEdcRamSegmentName(), true,
                                           &station.monitor));
        expectLimit(7000);
    }
};

/// Everything that the tour asks of QOR, from the connect to the farewell.
const char* const wholeTour[] = {
    "KwpConnect protocol=1 1 1 10400 125000 period=0 mode=0 FFFFFFFF FFFFFFFF 255 255 255 0 1 '' 1",
    "GetParamInfo 'IgnitionMap' '' '' '' 0..0 -1 arrays=1",
    "StaticParam 53 op=1 [] [] []",
    "GetParamInfo 'PedalCurve' '' '' '' 0..0 -1 arrays=1",
    "StaticParam 52 op=1 [] [] []",
    "GetParamInfo 'EcuSerialNumber' '' '' '' 0..0 -1 arrays=1",
    "DirectCtrl 0 op=1 [] 'EcuSerialNumber'",
    "GetParamInfo 'MaxEngineSpeed' '' '' '' 0..0 -1 arrays=1",
    "DirectCtrl 33 op=1 [] 'MaxEngineSpeed'",
    "DirectCtrl 33 op=4 [7000] ''",
    "DirectCtrl 33 op=1 [] 'MaxEngineSpeed'",
    "EcuSegment 1 'ReferencePage' 0",
    "DirectCtrl 33 op=1 [] 'MaxEngineSpeed'",
    "EcuSegment 1 'WorkingPage' 1",
    "DirectCtrl 33 op=1 [] 'MaxEngineSpeed'",
    "KwpConnect protocol=0 1 1 10400 125000 period=0 mode=0 FFFFFFFF FFFFFFFF 255 255 255 0 1 '' 1",
    "Shutdown 6"};

INSTANTIATE_TEST_SUITE_P(Over, Tour, everyTransport(), transportName);

TEST_P(Tour, TheExecutablePathIsThatOfTheSettings) {
    station.open();
    EXPECT_EQ(qor::executable(), station->getQorExecutablePath());
}

TEST_P(Tour, AConnectedEcuIsDescribedReadWrittenAndLetGoInOrder) {
    ASSERT_TRUE(station.start());
    const std::size_t records = station.wire().size();
    EXPECT_FALSE(station->isEcuOnline());
    ASSERT_TRUE(station.connectEcu());
    EXPECT_TRUE(station->isEcuOnline());
    describeAndRead();
    writeAndReadBack();
    changePages();
    station.close();
    EXPECT_THAT(station.requests(records), ElementsAreArray(wholeTour));
    EXPECT_TRUE(eventually(5000, [] { return qor::running().empty(); }));
}

TEST(Library, TellsTheVersionOfItsHeaders) {
    EXPECT_EQ(unsigned{QOR_VERSION}, qorcontrol::version());
    EXPECT_STREQ(QOR_VERSION_TEXT, qorcontrol::versionText());
}

}  // namespace
