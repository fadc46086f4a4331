#include "HostLife.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

using testing::Contains;
using testing::Pair;

namespace {

/// Memory, handles and threads of each time are told apart by their numbers.
HostLife someLife() {
    return {{100, 10, 1}, {200, 20, 2},  {300, 30, 3}, {364, 30, 67},
            {305, 30, 3}, {433, 94, 67}, {310, 31, 3}};
}

std::map<std::string, double> reported(const HostLife& life) {
    const std::string path = "bench_host_life_test.json";
    Report report(1);
    addLife(life, 500, "TCP", report);
    report.writeJson(path);
    std::ifstream file(path);
    const auto read = nlohmann::json::parse(file);
    file.close();
    std::remove(path.c_str());
    std::map<std::string, double> amounts;
    for (const auto& each : read["figures"]) amounts[each["name"]] = each["amount"];
    return amounts;
}

}  // namespace

TEST(HostLife, ComesOutOfItsLineAsItWentIn) {
    const std::string line = lineOf(someLife());
    EXPECT_EQ(std::string::npos, line.find('\n'));
    EXPECT_EQ(reported(someLife()), reported(lifeIn(line)));
}

TEST(HostLife, ALineThatIsCutShortIsNone) {
    EXPECT_THROW(lifeIn("[1,2,3]"), nlohmann::json::exception);
    EXPECT_THROW(lifeIn("[1,2"), nlohmann::json::exception);
}

TEST(HostLife, EachStageIsReported) {
    const auto amounts = reported(someLife());
    EXPECT_THAT(amounts, Contains(Pair("memory, no facade, TCP", 100)));
    EXPECT_THAT(amounts, Contains(Pair("memory, connected, TCP", 200)));
    EXPECT_THAT(amounts, Contains(Pair("handles, after 500 requests, TCP", 30)));
    EXPECT_THAT(amounts, Contains(Pair("threads, when these have ended, too, TCP", 3)));
}

TEST(HostLife, AThreadCostsWhatThereIsMoreThanBeforeButNeverLessThanNothing) {
    auto life = someLife();
    EXPECT_THAT(reported(life),
                Contains(Pair("memory, more for each thread that never calls, TCP", 1)));
    EXPECT_THAT(reported(life),
                Contains(Pair("memory, more for each thread that has called, TCP", 2)));
    EXPECT_THAT(reported(life),
                Contains(Pair("handles, more for each thread that has called, TCP", 1)));
    life.bare.memoryKb = 200;
    EXPECT_THAT(reported(life),
                Contains(Pair("memory, more for each thread that never calls, TCP", 0)));
}
