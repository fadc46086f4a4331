#include "serve/http/EventOutlet.h"

#include <gtest/gtest.h>

using qorctl::serve::http::EventOutlet;

namespace {

TEST(EventOutlet, GivesEventsAsABrowserReadsThem) {
    EventOutlet outlet;
    outlet.tell("a", "{}");
    outlet.tell("b", R"({"x":1})");
    EXPECT_EQ("event: a\ndata: {}\n\nevent: b\ndata: {\"x\":1}\n\n", outlet.next(0));
    EXPECT_EQ("", outlet.next(1));
}

TEST(EventOutlet, IsBehindUntilWhatWaitsWasSent) {
    EventOutlet outlet;
    EXPECT_FALSE(outlet.isBehind());
    outlet.tell("a", std::string(300 * 1024, 'x'));
    EXPECT_TRUE(outlet.isBehind());
    outlet.next(0);
    EXPECT_TRUE(outlet.isBehind());
    outlet.noteSent();
    EXPECT_FALSE(outlet.isBehind());
}

TEST(EventOutlet, KeepsNoMoreThanAFewMegabytesForAReaderThatStalls) {
    EventOutlet outlet;
    for (int i = 0; i < 100; ++i) outlet.tell("a", std::string(100 * 1024, 'x'));
    EXPECT_LT(outlet.next(0).size(), 5u * 1024 * 1024);
}

}  // namespace
