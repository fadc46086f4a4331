#include "behaviour/Outbox.h"

#include "TestSupport.h"

namespace simulator::test {
namespace {

Delivery rawDelivery(const std::string& bytes) {
    Delivery delivery;
    delivery.raw = bytes;
    return delivery;
}

// The bytes of every piece that is due, a close as "!".
std::vector<std::string> taken(Outbox& outbox, std::uint64_t nowMs) {
    std::vector<std::string> pieces;
    while (const std::optional<Piece> piece = outbox.take(nowMs)) {
        pieces.push_back(piece->bytes + (piece->close ? "!" : ""));
    }
    return pieces;
}

TEST(Outbox, DeliveriesLeaveInOrderOfTimeThenOfPosting) {
    Outbox outbox;
    outbox.post(rawDelivery("late"), 20);
    outbox.post(rawDelivery("a"), 10);
    outbox.post(rawDelivery("b"), 10);
    EXPECT_EQ(outbox.nextMs(), 10U);
    EXPECT_THAT(taken(outbox, 9), testing::IsEmpty());
    EXPECT_THAT(taken(outbox, 10), testing::ElementsAre("a", "b"));
    EXPECT_THAT(taken(outbox, 20), testing::ElementsAre("late"));
    EXPECT_EQ(outbox.nextMs(), std::nullopt);
}

TEST(Outbox, NothingOvertakesTheRestOfASplitDelivery) {
    Outbox outbox;
    Delivery split = rawDelivery("abcdef");
    split.splitAfterBytes = 2;
    split.gapMs = 50;
    outbox.post(split, 0);
    outbox.post(rawDelivery("next"), 10);
    EXPECT_THAT(taken(outbox, 0), testing::ElementsAre("ab"));
    EXPECT_EQ(outbox.nextMs(), 50U);
    EXPECT_THAT(taken(outbox, 49), testing::IsEmpty());
    EXPECT_THAT(taken(outbox, 50), testing::ElementsAre("cdef", "next"));
}

TEST(Outbox, ASplitRecordIsToldOnceForTheLog) {
    Outbox outbox;
    Delivery split;
    split.record = Record{CommandId::Ping, true, 1, ""};
    split.splitAfterBytes = 4;
    outbox.post(split, 0);
    const std::optional<Piece> first = outbox.take(0);
    const std::optional<Piece> rest = outbox.take(0);
    ASSERT_TRUE(first && rest);
    EXPECT_TRUE(first->record && !first->isRest);
    EXPECT_TRUE(!rest->record && rest->isRest);
}

TEST(Outbox, ASplitBehindTheEndSplitsNothing) {
    Outbox outbox;
    Delivery split = rawDelivery("ab");
    split.splitAfterBytes = 2;
    outbox.post(split, 0);
    EXPECT_THAT(taken(outbox, 0), testing::ElementsAre("ab"));
}

TEST(Outbox, MergedDeliveriesLeaveAsOnePiece) {
    Outbox outbox;
    Delivery held = rawDelivery("a");
    held.mergeWithNext = true;
    outbox.post(held, 0);
    outbox.post(held, 1);
    EXPECT_THAT(taken(outbox, 5), testing::IsEmpty());
    outbox.post(rawDelivery("b"), 6);
    EXPECT_THAT(taken(outbox, 6), testing::ElementsAre("aab"));
}

TEST(Outbox, AMergedRecordIsToldForTheLogWhenItIsHeld) {
    Outbox outbox;
    Delivery held;
    held.record = Record{CommandId::Ping, true, 1, ""};
    held.mergeWithNext = true;
    outbox.post(held, 0);
    const std::optional<Piece> piece = outbox.take(0);
    ASSERT_TRUE(piece && piece->record);
    EXPECT_EQ(piece->bytes, "");
}

TEST(Outbox, ACloseInTheMiddleSendsHalf) {
    Outbox outbox;
    Delivery delivery = rawDelivery("abcdef");
    delivery.closeMid = true;
    outbox.post(delivery, 0);
    EXPECT_THAT(taken(outbox, 0), testing::ElementsAre("abc!"));
}

TEST(Outbox, ASplitDeliveryClosesAfterItsRest) {
    Outbox outbox;
    Delivery delivery = rawDelivery("abcdef");
    delivery.splitAfterBytes = 1;
    delivery.closeAfter = true;
    outbox.post(delivery, 0);
    EXPECT_THAT(taken(outbox, 0), testing::ElementsAre("a", "bcdef!"));
}

TEST(Outbox, ClearingForgetsHeldSplitAndWaitingBytes) {
    Outbox outbox;
    Delivery held = rawDelivery("held");
    held.mergeWithNext = true;
    outbox.post(held, 0);
    taken(outbox, 0);
    outbox.post(rawDelivery("waiting"), 5);
    outbox.clear();
    outbox.post(rawDelivery("new"), 5);
    EXPECT_THAT(taken(outbox, 5), testing::ElementsAre("new"));
}

}  // namespace
}  // namespace simulator::test
