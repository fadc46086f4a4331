// Every operation of the C interface, with QOR's stand-in.

#include <cmath>
#include <cstring>

#include "CStation.h"

using testing::Contains;
using testing::DoubleEq;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr unsigned amplyMs = 5000;

class COperations : public testing::TestWithParam<Transport> {
protected:
    CStation station{GetParam()};

    void SetUp() override {
        ASSERT_TRUE(station.start());
        ASSERT_TRUE(station.connectEcu());
        before = station.wire().size();
    }

    QorHandle qor() const { return station.handle; }
    std::vector<std::string> requests() const { return station.requests(before); }

    std::string resultText(unsigned row, unsigned column) {
        unsigned needed = 0;
        if (QorResultText(qor(), row, column, nullptr, 0, &needed) != QOR_OK) return lastCall();
        std::string text(needed, '\0');
        EXPECT_THAT(QorResultText(qor(), row, column, text.data(), needed, &needed),
                    IsCause(QOR_OK));
        EXPECT_EQ('\0', text.back());
        text.pop_back();
        return text;
    }

    std::vector<double> resultValues(unsigned index) {
        unsigned needed = 0;
        EXPECT_THAT(QorResultValues(qor(), index, nullptr, 0, &needed), IsCause(QOR_OK));
        std::vector<double> values(needed);
        EXPECT_THAT(QorResultValues(qor(), index, values.data(), needed, &needed), IsCause(QOR_OK));
        return values;
    }

    std::size_t before = 0;
};

INSTANTIATE_TEST_SUITE_P(Over, COperations, everyTransport(), transportName);

TEST_P(COperations, AParameterIsDescribedInRowsAndColumns) {
    int threeArrays = 7;
    EXPECT_THAT(QorGetParamDescription(qor(), "IdleSpeedTarget", &threeArrays), IsCause(QOR_OK));
    EXPECT_EQ(0, threeArrays);
    EXPECT_EQ("IdleSpeedTarget", resultText(0, 0));
    EXPECT_EQ("IdleSpeedTarget", resultText(0, 1));
    EXPECT_EQ("Idle speed, warm engine", resultText(0, 2));
    EXPECT_EQ("1/min", resultText(0, 3));
    EXPECT_EQ("Idle", resultText(0, 4));
    EXPECT_THAT(QorResultText(qor(), 0, 5, nullptr, 0, nullptr), IsCause(QOR_BAD_ARGUMENT));
    EXPECT_THAT(QorResultText(qor(), 1, 0, nullptr, 0, nullptr), IsCause(QOR_BAD_ARGUMENT));
}

TEST_P(COperations, AScalarIsReadAndWritten) {
    const double wanted = 910;
    EXPECT_THAT(
        QorSetParamData(qor(), "IdleSpeedTarget", &wanted, 1, nullptr, 0, nullptr, 0, amplyMs),
        IsCause(QOR_OK));
    double value = 0;
    unsigned count = 0;
    EXPECT_THAT(QorGetParamData(qor(), "IdleSpeedTarget", amplyMs, &value, 1, &count),
                IsCause(QOR_OK));
    EXPECT_EQ(1u, count);
    EXPECT_THAT(value, DoubleEq(910));
}

}  // namespace
