#include "facade/channel/MessageBoxDesk.h"

#include <gmock/gmock.h>

#include <thread>

#include "common/Clock.h"
#include "support/FakeClock.h"

namespace {

using Desk = channel::MessageBoxDesk;

class MessageBoxDesk : public ::testing::Test {
protected:
    std::uint32_t present(const std::string& text = "Ready?") {
        return desk.present(text, "QOR", 4, [this] {
            ++shown;
            return 6u;
        });
    }
    /// The host's answer as soon as there is a box.
    std::thread answersWith(std::uint32_t choice) {
        return std::thread([this, choice] {
            while (!desk.next()) common::sleepMs(1);
            wasTaken = desk.answer(desk.next()->id, choice);
        });
    }

    Desk desk;
    int shown = 0;
    bool wasTaken = false;
};

TEST_F(MessageBoxDesk, ShowsABoxUnlessTheHostWantsSomethingElse) {
    EXPECT_EQ(present(), 6u);
    EXPECT_EQ(shown, 1);
}

TEST_F(MessageBoxDesk, AnswersWithTheGivenChoiceWithoutShowing) {
    desk.setPolicy(Desk::Policy::answer, 7, 0);
    EXPECT_EQ(present(), 7u);
    EXPECT_EQ(shown, 0);
}

TEST_F(MessageBoxDesk, ReportsEachBoxInOrderWhateverBecameOfIt) {
    desk.setPolicy(Desk::Policy::show, 0, 0);
    present("first");
    desk.setPolicy(Desk::Policy::answer, 7, 0);
    present("second");
    const auto first = desk.next();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->id, 1u);
    EXPECT_EQ(first->text, "first");
    EXPECT_EQ(first->caption, "QOR");
    EXPECT_EQ(first->type, 4u);
    EXPECT_FALSE(first->isWaiting);
    EXPECT_EQ(first->choice, 6u);
    EXPECT_EQ(desk.next()->id, 1u);  // until it is marked
    EXPECT_TRUE(desk.markTold(1));
    EXPECT_FALSE(desk.markTold(1));  // who asked at the same time
    EXPECT_EQ(desk.next()->text, "second");
    desk.markTold(2);
    EXPECT_FALSE(desk.next());
}

TEST_F(MessageBoxDesk, HandsOutEachBoxAgainAndAgainByItsNumber) {
    desk.setPolicy(Desk::Policy::show, 0, 0);
    present("first");
    present("second");
    desk.markTold(1);
    EXPECT_EQ(desk.nextAfter(0)->text, "first");
    EXPECT_EQ(desk.nextAfter(0)->text, "first");
    EXPECT_EQ(desk.nextAfter(1)->text, "second");
    EXPECT_FALSE(desk.nextAfter(2));
}

TEST_F(MessageBoxDesk, KnowsHowLongABoxStoodOpen) {
    FakeClock clock;
    desk.setPolicy(Desk::Policy::show, 0, 0);
    desk.present("", "", 0, [&] {
        EXPECT_TRUE(desk.nextAfter(0)->isWaiting);
        clock.advance(2500);
        return 1u;
    });
    clock.advance(7000);
    const auto box = desk.nextAfter(0);
    ASSERT_TRUE(box);
    EXPECT_EQ(box->end - box->arrival, 2500u);
}

TEST_F(MessageBoxDesk, TheHostIsAskedAndItsAnswerCounts) {
    desk.setPolicy(Desk::Policy::ask, 2, 10000);
    std::thread host = answersWith(5);
    EXPECT_EQ(present(), 5u);
    host.join();
    EXPECT_TRUE(wasTaken);
    EXPECT_EQ(shown, 0);
}

TEST_F(MessageBoxDesk, AHostThatDoesNotAnswerInTimeLeavesTheGivenChoice) {
    desk.setPolicy(Desk::Policy::ask, 2, 50);
    EXPECT_EQ(present(), 2u);
    EXPECT_FALSE(desk.answer(1, 6));
    EXPECT_EQ(desk.next()->choice, 2u);
}

TEST_F(MessageBoxDesk, ABoxThatIsShownOrUnknownTakesNoAnswerOfTheHost) {
    EXPECT_FALSE(desk.answer(1, 6));
    desk.present("", "", 0, [this] {
        wasTaken = desk.answer(1, 7);
        return 6u;
    });
    EXPECT_FALSE(wasTaken);
}

TEST_F(MessageBoxDesk, AHostThatGoesKeepsNobodyWaiting) {
    desk.setPolicy(Desk::Policy::ask, 3, 0xFFFFFFFFu);
    std::thread host([this] {
        while (!desk.next()) common::sleepMs(1);
        desk.close();
    });
    EXPECT_EQ(present(), 3u);
    host.join();
    EXPECT_EQ(present(), 3u);
}

TEST_F(MessageBoxDesk, KeepsTheLatestHundredBoxes) {
    desk.setPolicy(Desk::Policy::show, 0, 0);
    for (int i = 0; i < 103; ++i) present(std::to_string(i));
    EXPECT_EQ(desk.next()->text, "3");
}

TEST_F(MessageBoxDesk, KeepsNoMoreThanAMegabyteButForTheNewest) {
    desk.setPolicy(Desk::Policy::show, 0, 0);
    for (int i = 0; i < 3; ++i) present(std::string(Desk::maxBytes / 2, 'a'));
    EXPECT_EQ(desk.next()->id, 3u);
    present(std::string(Desk::maxBytes + 1, 'b'));
    EXPECT_EQ(desk.next()->id, 4u);
}

TEST_F(MessageBoxDesk, KeepsNothingForAHostThatCannotAsk) {
    present();
    EXPECT_FALSE(desk.next());
}

}  // namespace
