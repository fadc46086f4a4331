// Makes the page that the browser then looks at, and beside it what was printed meanwhile.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "WatchScene.h"

namespace {

// Two curves in one chart, of which one stalls for a while; one in the next; and texts that would
// break a page into which they went as they are.
const char* const model = R"({"parameters":[
  {"name":"Engine","description":"Engine speed","unit":"1/min","group":"g","limits":[0,8000],
   "live":[{"kind":"sine","mean":900,"amplitude":90,"periodS":2.5}]},
  {"name":"Turbine","description":"Turbine speed","unit":"1/min","group":"g","limits":[0,8000],
   "live":[{"kind":"sine","mean":600,"amplitude":60,"periodS":4}]},
  {"name":"OilPressure","description":"Oil & water","unit":"bar","group":"g","limits":[0,10],
   "live":[{"kind":"ramp","from":1,"to":4,"periodS":3}]},
  {"name":"</script><i>x</i>&lt;","description":"<img src=x onerror=alert(1)>","unit":"<b>%</b>",
   "group":"g","limits":[0,10],"live":[{"kind":"sine","mean":5,"amplitude":2,"periodS":2}]}]})";

TEST(WatchPage, IsWrittenByARealWatch) {
    const std::filesystem::path folder = PAGE_FOLDER;
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    WatchScene scene(Transport::tcp);
    scene.station.settings.model = scene.station.folder.write("model.json", model);
    scene.station.script = R"({"at":[{"since":"connect","afterMs":1500,"stall":"Engine"},
                                     {"since":"connect","afterMs":3500,"resume":"Engine"}]})";
    const auto ending = scene.run(
        "watch", {"Engine", "Turbine", "OilPressure", "</script><i>x</i>&lt;", "--for", "5",
                  "--json", "--refresh", "100", "--plot", (folder / "page.html").string()});
    ASSERT_EQ(0, ending.exitCode) << ending.err;
    std::ofstream(folder / "samples.json", std::ios::binary) << ending.out;
    EXPECT_TRUE(std::filesystem::exists(folder / "page.html"));
}

}  // namespace
