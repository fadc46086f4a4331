#include "facade/StreamSilence.h"

#include <gmock/gmock.h>

using qorcontrol::Cause;
using sinkstreams::silenceOf;
using testing::StartsWith;

namespace {

TEST(StreamSilence, IsNotReadyWhateverBecameOfItsNames) {
    EXPECT_EQ(Cause::notReady, silenceOf({Cause::none}).cause);
    EXPECT_EQ("QOR has sent none in this time", silenceOf({Cause::none}).detail);
    EXPECT_EQ("QOR has sent none in this time", silenceOf({Cause::notReady}).detail);
    EXPECT_STREQ("", silenceOf({Cause::none}).check);
}

TEST(StreamSilence, TellsWhyItsNamesCouldNotBeRegistered) {
    const auto refused = silenceOf({Cause::refused});
    EXPECT_EQ(Cause::notReady, refused.cause);
    EXPECT_EQ(
        "QOR has sent none in this time, and the names could not be registered: QOR refused the "
        "request",
        refused.detail);
    EXPECT_THAT(refused.check, StartsWith("See in QOR whether"));
    EXPECT_STREQ("look there", silenceOf({Cause::refused, "so", false, "look there"}).check);
}

TEST(StreamSilence, OfANameThatQorDoesNotKnowIsThat) {
    EXPECT_EQ(Cause::unknownName, silenceOf({Cause::unknownName}).cause);
}

}  // namespace
