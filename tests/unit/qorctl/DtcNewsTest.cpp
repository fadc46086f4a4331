#include <gmock/gmock.h>

#include "watch/DtcWatch.h"

using namespace qorctl;
using Kind = DtcNews::Kind;

namespace {

const CodeList misfire = {{0x301, 0x61, "P0301", "misfire", "present", "Ignition"}};
const CodeList marker = {{}};

TEST(NewsOfTroubleCodes, AListIsNewsWhenItHasChanged) {
    DtcNews news;
    EXPECT_EQ(Kind::codes, news.take(misfire));
    EXPECT_EQ(Kind::none, news.take(misfire));
    CodeList stored = misfire;
    stored[0].status = 0x20;
    EXPECT_EQ(Kind::codes, news.take(stored));
    CodeList renamed = stored;
    renamed[0].text4 = "Other";
    EXPECT_EQ(Kind::codes, news.take(renamed));
    EXPECT_EQ(Kind::codes, news.take({}));
    EXPECT_EQ(Kind::none, news.take({}));
    EXPECT_EQ(6u, news.lists());
}

TEST(NewsOfTroubleCodes, AnEmptyFirstListIsNews) {
    DtcNews news;
    EXPECT_EQ(Kind::codes, news.take({}));
}

TEST(NewsOfTroubleCodes, EachMarkerIsNewsAndSoIsTheListBehindIt) {
    DtcNews news;
    news.take(misfire);
    EXPECT_EQ(Kind::failure, news.take(marker));
    EXPECT_EQ(Kind::failure, news.take(marker));
    EXPECT_TRUE(news.isFailing());
    EXPECT_EQ(misfire.front().code, news.codes().front().code);
    EXPECT_EQ(Kind::codes, news.take(misfire));
    EXPECT_FALSE(news.isFailing());
    EXPECT_EQ(2u, news.failures());
    EXPECT_EQ(2u, news.lists());
}

TEST(NewsOfTroubleCodes, OneEntryWithATextOrACodeIsNoMarker) {
    DtcNews news;
    CodeList list = {{}};
    list[0].text3 = "x";
    EXPECT_EQ(Kind::codes, news.take(list));
    list[0] = {};
    list[0].code = 1;
    EXPECT_EQ(Kind::codes, news.take(list));
}

}  // namespace
