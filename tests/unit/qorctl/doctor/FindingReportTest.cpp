#include "doctor/FindingReport.h"

#include <gmock/gmock.h>

using namespace qorctl::doctor;
using testing::ElementsAre;

namespace {

const Findings mixed = {Finding::problem("b.long", "cannot be", "make it so"),
                        Finding::ok("a", "is there"),
                        Finding::warning("c", "is slow\r\nor dead", "look")};

TEST(FindingReport, TheWorstStandLastInColumnsWithTheirRemedies) {
    EXPECT_THAT(linesOf(mixed),
                ElementsAre("ok       a       is there",         //
                            "warning  c       is slow or dead",  //
                            "                 -> look",          //
                            "problem  b.long  cannot be",        //
                            "                 -> make it so",    //
                            "A host would not work with these settings: 1 problem, 1 warning."));
}

TEST(FindingReport, AWarningDoesNotKeepAHostFromWorking) {
    const Findings findings = {mixed[1], mixed[2]};
    EXPECT_TRUE(wouldWork(findings));
    EXPECT_EQ("A host would work with these settings (1 warning).", linesOf(findings).back());
    EXPECT_FALSE(wouldWork(mixed));
}

TEST(FindingReport, AsJsonTheyKeepTheOrderOfTheChecks) {
    const auto json = jsonOf(mixed);
    ASSERT_EQ(3u, json.size());
    const nlohmann::json first = {
        {"id", "b.long"}, {"status", "problem"}, {"what", "cannot be"}, {"remedy", "make it so"}};
    EXPECT_EQ(first, json[0]);
    EXPECT_EQ("ok", json[1]["status"]);
    EXPECT_EQ("", json[1]["remedy"]);
}

}  // namespace
