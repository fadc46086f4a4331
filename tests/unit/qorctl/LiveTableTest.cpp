#include "watch/LiveTable.h"

#include <gmock/gmock.h>

using namespace qorctl;
using testing::ElementsAre;

namespace {

TEST(LiveTable, ShowsValuesAndWhatHasStalledAndWhatNeverCame) {
    Sampler sampler({"Speed", "Pressure", "Fan"}, 0.2);
    sampler.take(0, 790, 0, 1);
    sampler.take(1, 2.5, 0, 1);
    sampler.take(0, 812.25, 0, 2.1);
    sampler.settle(2.2);
    EXPECT_THAT(
        liveTable(sampler, {"1/min", "bar", ""}, 2.25),
        ElementsAre("parameter   value  unit   lowest  highest  last seen",
                    "---------  ------  -----  ------  -------  ---------",
                    "Speed      812.25  1/min     790   812.25      0.1 s",
                    "Pressure        -  bar       2.5      2.5      1.2 s",
                    "Fan             -                              never", "2.2 s, 2 samples"));
}

TEST(LiveTable, ShowsTexts) {
    Sampler sampler({"Version"}, 0.2);
    sampler.takeText(0, "4.12.7", 1);
    sampler.finish();
    const auto lines = liveTable(sampler, {""}, 2.5);
    ASSERT_EQ(4u, lines.size());
    EXPECT_EQ("Version    4.12.7                             1.5 s", lines[2]);
    EXPECT_EQ("Version        -                             3.1 s",
              liveTable(sampler, {""}, 4.1)[2]);
}

}  // namespace
