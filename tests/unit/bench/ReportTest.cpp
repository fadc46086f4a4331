#include "bench/Report.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

using testing::ElementsAre;

namespace {

constexpr int rounds = 2;

nlohmann::json written(const Report& report) {
    const std::string path = "bench_report_test.json";
    report.writeJson(path);
    std::ifstream file(path);
    auto read = nlohmann::json::parse(file);
    file.close();
    std::remove(path.c_str());
    return read;
}

Samples hundred() {
    Samples samples;
    for (int us = 0; us <= 100; ++us) samples.add(us);
    return samples;
}

}  // namespace

TEST(Report, TheFileTellsTheRoundsAndEachFigureWithTheMediansOfItsRounds) {
    Report report(rounds);
    report.add("a figure", hundred(), 25);
    const auto file = written(report);
    EXPECT_EQ(rounds, file["rounds"]);
    const auto& figure = file["figures"].at(0);
    EXPECT_EQ("a figure", figure["name"]);
    EXPECT_EQ(50, figure["p50Us"]);
    EXPECT_EQ(25, figure["p50BoundUs"]);
    EXPECT_THAT(figure["partP50Us"].get<std::vector<double>>(), ElementsAre(25, 75));
}

TEST(Report, TheQuantilesGoFromTheLeastToTheGreatestSample) {
    Report report(rounds);
    report.add("a figure", hundred());
    const auto quantiles =
        written(report)["figures"].at(0)["quantilesUs"].get<std::vector<std::vector<double>>>();
    EXPECT_THAT(quantiles.front(), ElementsAre(0, 0));
    EXPECT_THAT(quantiles.back(), ElementsAre(1, 100));
    for (const auto& each : quantiles) EXPECT_NEAR(100 * each[0], each[1], 1e-9);
}

TEST(Report, RatesAndAmountsStandBehindTheFigures) {
    Report report(rounds);
    report.addAmount("an amount", "KiB", 4, 8);
    report.addRate("a rate", 3, 2);
    report.add("a figure", hundred());
    const auto figures = written(report)["figures"];
    EXPECT_EQ("a figure", figures.at(0)["name"]);
    EXPECT_EQ(3, figures.at(1)["perSecond"]);
    EXPECT_EQ(4, figures.at(2)["amount"]);
}
