#include "serve/rpc/Hint.h"

#include <gtest/gtest.h>

using qorctl::serve::beginningOf;
using qorctl::serve::quotedWithHint;

namespace {

TEST(Hint, NamesWhatMayBeMeant) {
    EXPECT_EQ("\"pingQr\", perhaps \"pingQor\" is meant", quotedWithHint("pingQr", {"pingQor"}));
    EXPECT_EQ("\"PINGQOR\", perhaps \"pingQor\" is meant", quotedWithHint("PINGQOR", {"pingQor"}));
    EXPECT_EQ("\"something\"", quotedWithHint("something", {"pingQor"}));
}

TEST(Hint, RepeatsNoMoreThanAPersonReads) {
    EXPECT_EQ("\"" + std::string(100, 'a') + "...\"",
              quotedWithHint(std::string(1000000, 'a'), {}));
}

TEST(Hint, CutsNoCharacterInTwo) {
    const std::string text = std::string(99, 'a') + "\xC3\xA4" + std::string(10, 'b');
    EXPECT_EQ(std::string(99, 'a') + "...", beginningOf(text));
}

}  // namespace
