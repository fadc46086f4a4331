#include "CallNotes.h"

#include <gmock/gmock.h>

#include <memory>

#include "QorControlFacade.h"
#include "support/TempFolder.h"

using qorcontrol::Cause;
using qorctl::CallNotes;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// A library whose settings file is missing: its agent ends, and operations fail. The first takes
/// its whole time, so there is one library for all.
class CallNotesOfADeadLibrary : public testing::Test {
protected:
    static void SetUpTestSuite() {
        const TempFolder folder;
        facade = std::make_unique<QorControlFacade>(folder.pathOf("none.ini"), nullptr, 0, "");
        failedCall();  // until it sees that there is no agent any more
    }
    static void TearDownTestSuite() { facade.reset(); }

    static bool failedCall() { return facade->pingQor(1000); }

    inline static std::unique_ptr<QorControlFacade> facade;
};

TEST_F(CallNotesOfADeadLibrary, TellTheCauseOfACallThatFails) {
    CallNotes calls;

    EXPECT_FALSE(calls.note(failedCall()));

    const auto outcome = calls.failure("no answer");
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ("no answer", outcome.text);
    EXPECT_EQ(Cause::agentEnded, outcome.told.cause);
    EXPECT_THAT(outcome.told.sentence, HasSubstr("Specified settings file"));
    EXPECT_FALSE(calls.allWorked());
}

TEST_F(CallNotesOfADeadLibrary, TellNothingOfCallsThatAreNotTheirs) {
    failedCall();

    CallNotes calls;

    EXPECT_EQ(Cause::none, calls.failure("of this program").told.cause);
    EXPECT_EQ(Cause::none, qorctl::Outcome::failure("of this program").told.cause);
    EXPECT_THAT(calls.failure("of this program").told.sentence, IsEmpty());
    EXPECT_TRUE(calls.allWorked());
}

TEST_F(CallNotesOfADeadLibrary, NameTheParametersThatFailed) {
    CallNotes calls;

    calls.note(failedCall(), "One");
    calls.note(failedCall(), "Other");

    EXPECT_EQ("not read: One, Other", calls.failureOfNames("not read").text);
}

}  // namespace
