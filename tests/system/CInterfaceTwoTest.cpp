// Two handles side by side in one process, each with settings and a QOR of its own, over every pair
// of transports: nothing of the one is ever seen through the other.

#include <cstring>
#include <tuple>
#include <vector>

#include "CStation.h"

namespace {

constexpr unsigned amplyMs = 10000;
constexpr unsigned periodMs = 50;
constexpr unsigned rounds = 50;

/// One of them; what it asks for and gets has the number in it.
struct One {
    One(Transport transport, unsigned which) : station(transport), number(which) {}

    QorHandle qor() const { return station.handle; }
    double limit() const { return 5000.0 + number; }

    /// QOR pushes a value of its own, puts a box of its own, and does not answer reads of trouble
    /// codes if it is the second.
    bool start() {
        const std::string name = std::to_string(number);
        station.script = R"({"at":[{"since":"connect","afterMs":100,"messageBox":{"caption":"C)" +
                         name + R"(","text":"Box )" + name + R"(","type":4}}],"rules":[)" +
                         (number == 2 ? R"({"match":{"id":9},"action":{"answer":"refuse"}})" : "") +
                         "]}";
        return station.start() &&
               QorSetMessageBoxPolicy(qor(), QOR_BOX_ANSWER, QOR_CHOICE_OK + number, 0) == QOR_OK &&
               station.connectEcu(periodMs);
    }

    int write() const {
        const double value = limit();
        return QorSetParamData(qor(), "MaxEngineSpeed", &value, 1, nullptr, 0, nullptr, 0, amplyMs);
    }
    double read() const {
        double value = 0;
        unsigned needed = 0;
        const char* const names[] = {"MaxEngineSpeed"};  // past the cache
        EXPECT_THAT(QorGetParamDataAtOnce(qor(), names, 1, amplyMs, &value, 1, &needed, nullptr),
                    IsCause(QOR_OK));
        return value;
    }
    int readCodes() const { return QorGetDtcByStatus(qor(), amplyMs, nullptr, 0, nullptr); }

    /// The parameters that are streamed differ: one with the engine's speed, two with a number of
    /// cylinders, which is the same all the time.
    int startStream() {
        const char* const names[] = {number == 1 ? "EngineSpeed" : "CylinderCount"};
        return QorStartParamRead(qor(), names, 1, 1000, &stream);
    }
    /// What has come by now, at least one value.
    std::vector<double> streamed() const {
        std::vector<double> values;
        QorSample samples[64];
        unsigned count = 0;
        EXPECT_THAT(QorReadParamStream(stream, samples, 64, &count, amplyMs), IsCause(QOR_OK));
        for (unsigned i = 0; i < count; ++i) values.push_back(samples[i].value);
        return values;
    }
    std::string box() const {
        QorMessageBox told = {};
        told.size = sizeof told;
        char text[32] = "";
        char caption[32] = "";
        EXPECT_TRUE(eventually(amplyMs, [&] {
            return QorNextMessageBox(qor(), &told, text, sizeof text, nullptr, caption,
                                     sizeof caption, nullptr) == QOR_OK;
        }));
        EXPECT_TRUE(eventually(amplyMs, [&] { return answer() == QOR_CHOICE_OK + number; }));
        return std::string(caption) + " " + text;
    }
    /// What QOR was told, 0: nothing yet.
    unsigned answer() const {
        constexpr unsigned idRedirectUI = 10;
        unsigned choice = 0;
        for (const WireRecord& record : station.wire())
            if (record.toQor && record.id == idRedirectUI && record.payload.size() >= 4)
                std::memcpy(&choice, record.payload.data() + record.payload.size() - 4, 4);
        return choice;
    }

    CStation station;
    const unsigned number;
    QorStream stream = nullptr;
};

using Pair = std::tuple<Transport, Transport>;

std::string pairName(const testing::TestParamInfo<Pair>& info) {
    return nameOf(std::get<0>(info.param)) + nameOf(std::get<1>(info.param));
}

class TwoHandles : public testing::TestWithParam<Pair> {
protected:
    // A station looks behind itself whether any QOR has been left.
    ~TwoHandles() override {
        first.station.close();
        second.station.close();
    }

    One first{std::get<0>(GetParam()), 1};
    One second{std::get<1>(GetParam()), 2};
};

INSTANTIATE_TEST_SUITE_P(Over, TwoHandles, testing::Combine(everyTransport(), everyTransport()),
                         pairName);

TEST_P(TwoHandles, NeverMixTheirValuesStreamsCausesAndBoxes) {
    ASSERT_TRUE(first.start());
    ASSERT_TRUE(second.start());
    ASSERT_NE(first.qor(), second.qor());
    EXPECT_THAT(first.write(), IsCause(QOR_OK));
    EXPECT_THAT(second.write(), IsCause(QOR_OK));
    ASSERT_THAT(first.startStream(), IsCause(QOR_OK));
    ASSERT_THAT(second.startStream(), IsCause(QOR_OK));
    for (unsigned round = 0; round < rounds; ++round) {
        EXPECT_EQ(first.limit(), first.read());
        EXPECT_EQ(second.limit(), second.read());
        EXPECT_THAT(first.readCodes(), IsCause(QOR_OK));
        EXPECT_THAT(second.readCodes(), IsCause(QOR_REFUSED));
    }
    EXPECT_THAT(first.streamed(), testing::Each(testing::Gt(100)));
    EXPECT_THAT(second.streamed(), testing::Each(4));
    EXPECT_EQ("C1 Box 1", first.box());
    EXPECT_EQ("C2 Box 2", second.box());
}

TEST_P(TwoHandles, ClosingOneLeavesTheOther) {
    ASSERT_TRUE(first.start());
    ASSERT_TRUE(second.start());
    EXPECT_THAT(second.write(), IsCause(QOR_OK));
    ASSERT_THAT(first.startStream(), IsCause(QOR_OK));
    ASSERT_THAT(second.startStream(), IsCause(QOR_OK));
    const QorHandle closed = first.qor();
    EXPECT_THAT(first.station.close(), IsCause(QOR_OK));
    EXPECT_THAT(QorPingQor(closed, amplyMs), IsCause(QOR_BAD_HANDLE));
    EXPECT_THAT(QorStopParamRead(first.stream), IsCause(QOR_BAD_HANDLE));
    second.streamed();
    EXPECT_EQ(second.limit(), second.read());
    EXPECT_THAT(second.streamed(), testing::Each(4));
    EXPECT_THAT(second.readCodes(), IsCause(QOR_REFUSED));
    EXPECT_EQ("C2 Box 2", second.box());
    EXPECT_THAT(QorStopParamRead(second.stream), IsCause(QOR_OK));
}

}  // namespace
