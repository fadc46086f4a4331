#include "cinterface/CodeBox.h"

#include <gmock/gmock.h>

#include <thread>

using cinterface::CodeBox;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Found = CodeBox::Found;

namespace {

CodeBox::Codes codes(std::size_t count) {
    return CodeBox::Codes(count);
}

TEST(CodeBox, HasNothingWhenItsTimeIsOver) {
    CodeBox box;
    const auto read = box.read(0);
    EXPECT_EQ(read.found, Found::nothing);
    EXPECT_EQ(read.missed, 0u);
}

TEST(CodeBox, GivesAListOnce) {
    CodeBox box;
    box.take(codes(3), true);
    const auto read = box.read(0);
    EXPECT_EQ(read.found, Found::codes);
    EXPECT_THAT(read.codes, SizeIs(3));
    EXPECT_TRUE(read.mayBelongToEarlier);
    EXPECT_EQ(box.read(0).found, Found::nothing);
}

TEST(CodeBox, KeepsTheNewestListAndCountsTheOthersForGood) {
    CodeBox box;
    for (std::size_t count = 1; count <= 3; ++count) box.take(codes(count), false);
    auto read = box.read(0);
    EXPECT_THAT(read.codes, SizeIs(3));
    EXPECT_EQ(read.missed, 2u);
    box.take(codes(0), false);
    read = box.read(0);
    EXPECT_THAT(read.codes, IsEmpty());
    EXPECT_EQ(read.missed, 2u);
    box.take(codes(1), false);
    box.take(codes(1), false);
    EXPECT_EQ(box.read(0).missed, 3u);
}

TEST(CodeBox, TellsOfSilenceWithItsReason) {
    CodeBox box;
    box.noteSilence({qorcontrol::Cause::ecuOffline, "", false});
    const auto read = box.read(0);
    EXPECT_EQ(read.found, Found::silence);
    EXPECT_EQ(read.silence.cause, qorcontrol::Cause::ecuOffline);
}

TEST(CodeBox, SilenceDoesNotTakeThePlaceOfAList) {
    CodeBox box;
    box.take(codes(1), false);
    box.noteSilence({qorcontrol::Cause::ecuOffline, "", false});
    EXPECT_EQ(box.read(0).found, Found::codes);
    EXPECT_EQ(box.read(0).found, Found::nothing);
}

TEST(CodeBox, AListTakesThePlaceOfSilence) {
    CodeBox box;
    box.noteSilence({qorcontrol::Cause::ecuOffline, "", false});
    box.take(codes(1), false);
    const auto read = box.read(0);
    EXPECT_EQ(read.found, Found::codes);
    EXPECT_EQ(read.missed, 0u);
}

TEST(CodeBox, ClosingSendsAReaderAway) {
    CodeBox box;
    Found found = Found::nothing;
    std::thread reader([&] { found = box.read(0xFFFFFFFFu).found; });
    box.close();
    reader.join();
    EXPECT_EQ(found, Found::closed);
    EXPECT_EQ(box.read(0).found, Found::closed);
}

}  // namespace
