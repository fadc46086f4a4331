#include "wire/Reader.h"

#include <cmath>

#include "TestSupport.h"
#include "wire/Writer.h"

namespace simulator::test {
namespace {

TEST(Reader, ReadsLittleEndianWords) {
    const std::string bytes = bytesOf("78 56 34 12 FE FF FF FF");
    Reader in(bytes);
    EXPECT_EQ(in.u32(), 0x12345678U);
    EXPECT_EQ(in.i32(), -2);
    EXPECT_TRUE(in.atEnd());
    EXPECT_FALSE(in.isShort());
}

TEST(Reader, OnlyTheWordOneIsTrue) {
    const std::string bytes = bytesOf("01 00 00 00 02 00 00 00 00 00 00 00");
    Reader in(bytes);
    EXPECT_TRUE(in.boolean());
    EXPECT_FALSE(in.boolean());
    EXPECT_FALSE(in.boolean());
}

TEST(Reader, AValueThatIsCutOffKeepsItsDefaultAndConsumesNothing) {
    const std::string bytes = bytesOf("01 02 03");
    Reader in(bytes);
    EXPECT_EQ(in.u32(9), 9U);
    EXPECT_TRUE(in.boolean(true));
    EXPECT_EQ(in.f64(2.5), 2.5);
    EXPECT_EQ(in.remaining(), 3U);
    EXPECT_TRUE(in.isShort());
}

TEST(Reader, ACutTextLeavesItsLengthWordUnread) {
    const std::string bytes = bytesOf("05 00 00 00 61 62");
    Reader in(bytes);
    EXPECT_EQ(in.text(), "");
    EXPECT_EQ(in.u32(), 5U);
}

TEST(Reader, ATextLengthNearTheTopOfTheRangeIsNoText) {
    const std::string bytes = bytesOf("FF FF FF FF 61");
    Reader in(bytes);
    EXPECT_EQ(in.text(), "");
    EXPECT_TRUE(in.isShort());
}

TEST(Reader, ATextMayHoldZeroBytes) {
    const std::string bytes = bytesOf("03 00 00 00 61 00 62");
    Reader in(bytes);
    EXPECT_EQ(in.text(), std::string("a\0b", 3));
}

TEST(Reader, ASequenceOfAnAbsurdCountEndsWithTheBytes) {
    const std::string bytes = bytesOf("FF FF FF FF 00 00 00 00 00 00 F0 3F 01");
    Reader in(bytes);
    EXPECT_THAT(in.doubles(), testing::ElementsAre(1.0));
    EXPECT_TRUE(in.isShort());
}

TEST(Reader, ASequenceAfterACutValueIsStillRead) {
    const std::string bytes = bytesOf("09 00 00 00");
    Reader in(bytes);
    in.f64();
    EXPECT_EQ(in.u32(), 9U);
}

TEST(Reader, EmptyTextsAreElementsToo) {
    const std::string bytes = bytesOf("02 00 00 00 00 00 00 00 00 00 00 00");
    Reader in(bytes);
    EXPECT_THAT(in.texts(), testing::ElementsAre("", ""));
    EXPECT_FALSE(in.isShort());
}

TEST(Writer, WritesADoubleAsItsLittleEndianImage) {
    EXPECT_EQ(Writer().f64(-2.5).take(), bytesOf("00 00 00 00 00 00 04 C0"));
}

TEST(Writer, NanAndInfinityComeBackUnchanged) {
    const std::string bytes = Writer().f64(std::nan("")).f64(-INFINITY).take();
    Reader in(bytes);
    EXPECT_TRUE(std::isnan(in.f64()));
    EXPECT_EQ(in.f64(), -INFINITY);
}

}  // namespace
}  // namespace simulator::test
