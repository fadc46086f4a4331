#include "watch/plot/PlotPage.h"

#include <gmock/gmock.h>

using namespace qorctl;
using nlohmann::json;

namespace {

TEST(PlotPage, EachPlaceGetsItsPart) {
    EXPECT_EQ("<a>1</a><b>2</b>1",
              filledIn("<a>{{x}}</a><b>{{y z}}</b>{{x}}", {{"x", "1"}, {"y z", "2"}}));
}

TEST(PlotPage, PlacesInAPartAreNotFilledIn) {
    EXPECT_EQ("{{y}}|{{x}}", filledIn("{{x}}|{{y}}", {{"x", "{{y}}"}, {"y", "{{x}}"}}));
}

TEST(PlotPage, APlaceWithoutAPartIsAnError) {
    EXPECT_THROW(filledIn("a {{x}} b", {{"y", ""}}), std::invalid_argument);
    EXPECT_THROW(filledIn("a {{x b", {{"x", ""}}), std::invalid_argument);
}

TEST(PlotPage, HtmlIsMadeHarmless) {
    EXPECT_EQ("&lt;b a=&quot;1&quot; c=&#39;2&#39;&gt;&amp;amp;", htmlOf("<b a=\"1\" c='2'>&amp;"));
}

TEST(PlotPage, NothingInTheDataEndsItsScriptElement) {
    const json data = {{"</script><script>alert(1)</script>", "<!-- \xC3\xA9 \""}};
    const std::string text = scriptJson(data);
    EXPECT_EQ(std::string::npos, text.find('<'));
    EXPECT_EQ(data, json::parse(text));
}

TEST(PlotPage, BytesThatAreNoTextAreReplaced) {
    EXPECT_EQ("[\"a\\ufffdb\"]", scriptJson(json::array({"a\xFF"
                                                         "b"})));
}

}  // namespace
