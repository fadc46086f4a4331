#include "watch/LiveTable.h"

#include <gmock/gmock.h>

using namespace qorctl;
using testing::ElementsAre;

namespace {

TEST(LiveTable, ShowsValuesAndWhatHasStalledAndWhatNeverCame) {
    Sampler sampler({"Speed", "Pressure", "Fan"}, 0.2);
    sampler.take({{"Speed", {790}}, {"Pressure", {2.5}}}, 1);
    sampler.take({{"Speed", {812.25}}}, 2.1);
    sampler.sampleAt(2.2);
    EXPECT_THAT(
        liveTable(sampler, {"1/min", "bar", ""}, 2.25),
        ElementsAre("parameter   value  unit   lowest  highest  last seen",
                    "---------  ------  -----  ------  -------  ---------",
                    "Speed      812.25  1/min     790   812.25      0.1 s",
                    "Pressure        -  bar       2.5      2.5      1.2 s",
                    "Fan             -                              never", "2.2 s, 1 samples"));
}

}  // namespace
