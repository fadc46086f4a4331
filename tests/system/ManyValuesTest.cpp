// Much of everything, and numbers that are none.

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include "Models.h"
#include "Station.h"
#include "Waiting.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr unsigned amply = 10000;
constexpr std::size_t many = 100000;
constexpr double infinity = std::numeric_limits<double>::infinity();

std::vector<double> ramp(double from) {
    std::vector<double> values(many);
    for (std::size_t i = 0; i < many; ++i) values[i] = from + static_cast<double>(i) / 8;
    return values;
}

/// Numbers that are none, among others.
std::vector<double> strangeNumbers() {
    std::vector<double> values(many, 1.5);
    values[1] = std::numeric_limits<double>::quiet_NaN();
    values[2] = infinity;
    values[3] = -infinity;
    return values;
}

std::string hexTextOf(const std::string& bytes) {
    std::string hex;
    for (const char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(byte));
        hex += digits;
    }
    return hex;
}

class ManyValues : public testing::TestWithParam<Transport> {
protected:
    /// A model with a parameter of one array and one of three, both of great length.
    bool startWithLongParameters() {
        auto model = shippedModel();
        nlohmann::json common = {{"description", ""}, {"unit", ""}, {"group", ""}};
        common["limits"] = {-1e9, 1e9};
        auto one = common;
        one["name"] = "LongArray";
        one["values"] = ramp(0);
        auto three = common;
        three["name"] = "LongCurve";
        three["values"] = ramp(1);
        three["x"] = ramp(2);
        model["parameters"].push_back(one);
        model["parameters"].push_back(three);
        station.settings.model = station.folder.write("model.json", model.dump());
        return station.start();
    }
    /// Writes arrays of great length until QOR has them. What a write itself tells is nothing: it
    /// is given half a second, and a busy machine may need more for so many.
    bool takes(const char* name, const std::vector<double>& v, const std::vector<double>& x) {
        return eventually(60000, [&] {
            (void)station->setParamData(name, v, x, {}, amply);
            return station->getParamData(name, values, second, third, amply) && values == v &&
                   second == x;
        });
    }
    /// The payload of the last request.
    std::string lastPayload() const { return requestsIn(station.wire()).back().payload; }

    /// Writes numbers that QOR refuses; whether it got them, in a payload of so many bytes. It
    /// takes a while to write down so many. A write is given half a second: a window message that
    /// QOR has not begun to take by then, because the machine is busy, is lost, and so it is
    /// written again.
    bool refuses(const char* name, const std::vector<double>& v, const std::vector<double>& x,
                 const std::vector<double>& y, std::size_t bytes) {
        const int attempts = GetParam() == Transport::window ? 3 : 1;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            EXPECT_FALSE(station->setParamData(name, v, x, y, amply));
            if (eventually(amply, [=] { return lastPayload().size() == bytes; })) return true;
        }
        return false;
    }
    /// How many requests with this id QOR has seen.
    std::size_t countOf(unsigned id) const {
        const auto all = requestsIn(station.wire());
        return static_cast<std::size_t>(std::count_if(
            all.begin(), all.end(), [=](const WireRecord& record) { return record.id == id; }));
    }

    Station station{GetParam()};
    std::vector<double> values, second, third;
};

INSTANTIATE_TEST_SUITE_P(Over, ManyValues, everyTransport(), transportName);

TEST_P(ManyValues, AHundredThousandOfThemAreReadAndWrittenWhole) {
    ASSERT_TRUE(startWithLongParameters());
    ASSERT_TRUE(station->getParamData("LongArray", values, second, third, amply));
    EXPECT_EQ(ramp(0), values);
    ASSERT_TRUE(station->getParamData("LongCurve", values, second, third, amply));
    EXPECT_EQ(ramp(1), values);
    EXPECT_EQ(ramp(2), second);
    EXPECT_THAT(third, IsEmpty());

    ASSERT_TRUE(takes("LongArray", ramp(3), {}));
    ASSERT_TRUE(takes("LongCurve", ramp(4), ramp(5)));
    ASSERT_TRUE(station->getParamData("LongArray", values, second, third, amply));
    EXPECT_EQ(ramp(3), values);

    std::vector<std::vector<double>> group;
    ASSERT_TRUE(station->getParamDataAtOnce({"LongArray", "MaxEngineSpeed"}, group, amply));
    EXPECT_THAT(group, ElementsAre(ramp(3), ElementsAre(6500)));
}

TEST_P(ManyValues, NumbersThatAreNoneAreWrittenAsTheyAreAndQorMayRefuseThem) {
    ASSERT_TRUE(station.start());
    const auto strange = strangeNumbers();
    ASSERT_TRUE(refuses("MaxEngineSpeed", strange, {}, {}, 16 + 8 * many));
    EXPECT_EQ(0, std::memcmp(lastPayload().data() + 12, strange.data(), 8 * many));
    // No window message longer than 2 MiB arrives under Wine.
    constexpr std::size_t fewer = 80000;
    const std::vector<double> part(strange.begin(), strange.begin() + fewer);
    EXPECT_TRUE(refuses("DwellTime", part, part, part, 20 + 3 * 8 * fewer));
    // Whether it arrives or not, the station is well again. (Wine may tell the sender of one that
    // does not that it was taken, if QOR sends something at that moment.)
    const bool isTaken = station->setParamData("DwellTime", strange, strange, strange, amply);
    EXPECT_FALSE(isTaken && GetParam() == Transport::tcp);
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_THAT(values, ElementsAre(6500));
}

TEST_P(ManyValues, EmptyArraysAreWrittenAsTheyAreAndQorMayRefuseThem) {
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(station->setParamData("MaxEngineSpeed", {}, {}, {}, amply));
    EXPECT_EQ("DirectCtrl 33 op=4 [] ''", station.requests().back());
    EXPECT_FALSE(station->setParamData("DwellTime", {}, {}, {}, amply));
    EXPECT_EQ("StaticParam 51 op=2 [] [] []", station.requests().back());
    EXPECT_TRUE(station->getParamData("DwellTime", values, second, third, amply));
    EXPECT_THAT(values, SizeIs(5));
}

TEST_P(ManyValues, NumbersThatAreNoneAreReadAsTheyAre) {
    const double told[] = {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, -0.0};
    const std::string array =
        std::string("\4\0\0\0", 4) + std::string(reinterpret_cast<const char*>(told), sizeof told);
    const std::string one = std::string("\x21\0\0\0\1\0\0\0", 8) + array + std::string(4, '\0');
    const std::string three = std::string("\x33\0\0\0\1\0\0\0", 8) + array + array + array;
    const auto telling = [](const char* match, const char* id, const std::string& payload) {
        return std::string(R"({"match":)") + match +
               R"(,"action":{"answer":"ackOnly","then":[{"afterMs":5,"record":{"id":)" + id +
               R"(,"payloadHex":")" + hexTextOf(payload) + R"("}}]}})";
    };
    station.script = R"({"rules":[)" + telling(R"({"id":7,"operation":1})", "7", one) + "," +
                     telling(R"({"id":12,"operation":1})", "12", three) + "]}";
    ASSERT_TRUE(station.start());
    for (const char* const name : {"MaxEngineSpeed", "DwellTime"}) {
        ASSERT_TRUE(station->getParamData(name, values, second, third, amply)) << name;
        ASSERT_THAT(values, SizeIs(4));
        EXPECT_TRUE(std::isnan(values[0]));
        EXPECT_EQ(infinity, values[1]);
        EXPECT_EQ(-infinity, values[2]);
        EXPECT_TRUE(std::signbit(values[3]));
    }
    EXPECT_THAT(second, SizeIs(4));
    EXPECT_THAT(third, SizeIs(4));
    std::string text;
    ASSERT_TRUE(station->getParamDataAsString("MaxEngineSpeed", text, amply));
    EXPECT_EQ(std::string(4, '\0'), text);
}

TEST_P(ManyValues, AGroupOfThousandsOfNamesIsOneExchange) {
    ASSERT_TRUE(station.start());
    std::vector<std::string> names;
    for (int i = 0; i < 2500; ++i) {
        names.emplace_back("MaxEngineSpeed");
        names.emplace_back("KnockRetard");
    }
    std::vector<std::vector<double>> group;
    ASSERT_TRUE(station->getParamDataAtOnce(names, group, amply));
    ASSERT_THAT(group, SizeIs(5000));
    EXPECT_THAT(group.front(), ElementsAre(6500));
    EXPECT_THAT(group.back(), ElementsAre(2.25));
    EXPECT_EQ(2u, countOf(3));
    EXPECT_EQ(1u, countOf(18));
    names.emplace_back("NoSuchParameter");
    EXPECT_FALSE(station->getParamDataAtOnce(names, group, amply));
    EXPECT_THAT(group, SizeIs(5000));
}

TEST_P(ManyValues, AKwpRequestOfTenThousandBytesTravelsWhole) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu());
    const std::string bytes(10000, '\xFE');
    QorControlFacade::KwpCommand kwp = {0x3E, bytes, 0};
    EXPECT_TRUE(station->sendKwpCommand(kwp, amply));
    EXPECT_EQ("\x7E", kwp.data);
    EXPECT_NE(std::string::npos, lastPayload().find(bytes));
    EXPECT_EQ(2u, station.logLines().size() - 1);  // behind the connect's line
}

}  // namespace
