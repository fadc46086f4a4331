#include "common/News.h"

#include <gtest/gtest.h>

#include "TestThread.h"

using common::News;
using testing_support::TestThread;

TEST(News, AreNotToldWhileNobodyWaits) {
    News news;
    news.tell();
    { const News::Awaiting before(news); }
    news.tell();
    const News::Awaiting awaiting(news);
    EXPECT_FALSE(awaiting.event().wait(0));
}

TEST(News, AreToldToWhoWaits) {
    News news;
    const News::Awaiting awaiting(news);
    TestThread teller([&] { news.tell(); });
    EXPECT_TRUE(awaiting.event().wait(5000));
    EXPECT_FALSE(awaiting.event().wait(0)) << "once";
}

TEST(News, AreToldOncePerWait) {
    News news;
    {
        const News::Awaiting awaiting(news);
        news.tell();
        EXPECT_TRUE(awaiting.event().wait(0));
        news.tell();
        EXPECT_FALSE(awaiting.event().wait(0)) << "it is told already";
    }
    const News::Awaiting next(news);
    news.tell();
    EXPECT_TRUE(next.event().wait(0));
}
