#include "doctor/QorCheck.h"

#include <gmock/gmock.h>

#include "Found.h"

using namespace qorctl::doctor;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

const char* const qor = "c:\\qor\\qor.exe";
const Holder itself{7, "C:\\QOR\\qor.exe"};
const Holder stranger{8, "c:\\windows\\other.exe"};

class QorCheck : public testing::Test {
protected:
    PeerFacts peer;
    QorAnswers answers;

    QorCheck() {
        peer.isTcp = true;
        peer.place = "port 5000 of h";
        peer.clientPlace = "window \"host\"";
    }
    void answered(const std::vector<double>& times, unsigned pings = 3) {
        answers.isAsked = true;
        answers.pings = pings;
        answers.times = times;
    }
    Findings check(const std::string& executable = qor) const {
        return checkQor(peer, answers, executable);
    }
    Finding place(const std::string& executable = qor) const {
        return found(check(executable), "qor.place");
    }
};

TEST_F(QorCheck, WhereNobodyIsAHostStartsQorIfItCan) {
    EXPECT_EQ(Status::ok, place().status);
    EXPECT_EQ(Status::problem, place("").status);
    EXPECT_FALSE(mayBeAsked(peer));
    peer.isRemote = true;
    EXPECT_EQ(Status::problem, place().status);
    EXPECT_THAT(place().what, HasSubstr("takes no connection"));
}

TEST_F(QorCheck, WhereTheSystemTellsNothingAConnectionDoes) {
    peer.isTold = false;
    EXPECT_EQ(Status::ok, place().status) << "a host starts QOR";
    peer.accepts = true;
    EXPECT_TRUE(mayBeAsked(peer));
    answered({1, 1, 1});
    EXPECT_EQ("port 5000 of h: takes connections", place().what);
    answered({});
    EXPECT_THAT(place().what, HasSubstr("taken, which does not answer"));
}

TEST_F(QorCheck, AQorThatAnswersIsToldWithItsTimes) {
    peer.servers = {itself};
    EXPECT_TRUE(mayBeAsked(peer));
    answered({0.5, 12.34, 1});
    const auto findings = check();
    EXPECT_THAT(idsOf(findings), ElementsAre("qor.place", "qor.answer"));
    EXPECT_EQ(Status::ok, findings[0].status);
    EXPECT_EQ("port 5000 of h: held by C:\\QOR\\qor.exe (process 7)", findings[0].what);
    EXPECT_EQ(Status::ok, findings[1].status);
    EXPECT_EQ("3 of 3 pings answered, in ms: 0.5, 12.3, 1.0", findings[1].what);
}

TEST_F(QorCheck, AForeignProgramIsAProblemUnlessItAnswersAsQor) {
    peer.servers = {stranger};
    answered({});
    EXPECT_EQ(Status::problem, place().status);
    EXPECT_THAT(place().what, HasSubstr("c:\\windows\\other.exe (process 8)"));
    EXPECT_THAT(place().remedy, HasSubstr("another TcpPort"));
    EXPECT_EQ(Status::problem, found(check(), "qor.answer").status);
    answered({1, 1, 1});
    EXPECT_EQ(Status::warning, place().status);
    EXPECT_EQ(Status::ok, place("").status) << "nobody says which program it should be";
}

TEST_F(QorCheck, AHolderThatTheSystemDoesNotNameIsJudgedByItsAnswers) {
    peer.servers = {Holder()};
    answered({1, 1, 1});
    EXPECT_EQ(Status::ok, place().status);
    EXPECT_THAT(place().what, HasSubstr("a process that the system does not name"));
    answered({});
    EXPECT_EQ(Status::problem, place().status);
}

TEST_F(QorCheck, ASilentQorIsToldFromAForeignProgram) {
    peer.servers = {itself};
    answered({});
    EXPECT_EQ(Status::problem, place().status);
    EXPECT_THAT(place().remedy, HasSubstr("message box"));
    peer.servers = {{9, "qor.exe"}};  // of another account: its name is all that is told
    EXPECT_THAT(place().remedy, HasSubstr("message box"));
}

TEST_F(QorCheck, AQorInUseIsNotAsked) {
    peer.servers = {itself};
    peer.clients = {stranger};
    EXPECT_FALSE(mayBeAsked(peer));
    EXPECT_EQ(Status::ok, place().status);
    EXPECT_EQ(Status::problem, found(check(), "qor.client").status);
    EXPECT_THAT(found(check(), "qor.client").what, HasSubstr("other.exe"));
    EXPECT_FALSE(isFound(check(), "qor.answer"));
}

TEST_F(QorCheck, AHostsWindowTitleInUseIsAProblem) {
    peer.isTcp = false;
    peer.clients = {stranger};
    const Finding client = found(check(), "qor.client");
    EXPECT_EQ(Status::problem, client.status);
    EXPECT_THAT(client.what, HasSubstr("window \"host\": held by c:\\windows\\other.exe"));
    EXPECT_THAT(client.remedy, HasSubstr("ClientPipeName"));
}

TEST_F(QorCheck, TwoWindowsOfOneTitleAreAWarning) {
    peer.isTcp = false;
    peer.servers = {itself, stranger};
    answered({1, 1, 1});
    EXPECT_EQ(Status::warning, place().status);
}

TEST_F(QorCheck, SlowAndLostAnswersAreWarnings) {
    peer.servers = {itself};
    answered({1, 201, 1});
    EXPECT_EQ(Status::warning, found(check(), "qor.answer").status);
    EXPECT_THAT(found(check(), "qor.answer").remedy, HasSubstr("starts another"));
    answered({1, 1});
    EXPECT_EQ(Status::warning, found(check(), "qor.answer").status);
    EXPECT_THAT(found(check(), "qor.answer").what, HasSubstr("2 of 3"));
}

TEST_F(QorCheck, RequestsThatWaitForAConfirmationAreAWarningThatNamesTheOption) {
    peer.servers = {itself};
    answered({1, 1, 1});
    answers.requestMs = 44;
    answers.noDelayMs = 1.5;
    EXPECT_EQ(Status::warning, found(check(), "qor.delay").status);
    EXPECT_THAT(found(check(), "qor.delay").what, HasSubstr("takes 44 ms, and 2 ms"));
    EXPECT_THAT(found(check(), "qor.delay").remedy, HasSubstr("--tcp-no-delay"));
}

TEST_F(QorCheck, RequestsThatAreSlowAnywayOrQuickAreNone) {
    peer.servers = {itself};
    answered({1, 1, 1});
    const std::pair<double, double> others[] = {{44, 43}, {2, 1}, {29, 1}, {0, 0}, {44, 0}};
    for (const auto& [requestMs, noDelayMs] : others) {
        answers.requestMs = requestMs;
        answers.noDelayMs = noDelayMs;
        EXPECT_THAT(check(), Not(Contains(testing::Field(&Finding::id, "qor.delay"))))
            << requestMs << " and " << noDelayMs;
    }
}

TEST_F(QorCheck, AStartThatFailsIsAProblemWithTheReason) {
    answers.isStartTried = true;
    answers.startFailure = "Fail to launch";
    EXPECT_EQ(Status::problem, found(check(), "qor.start").status);
    EXPECT_EQ("Fail to launch", found(check(), "qor.start").what);
    answers.startFailure.clear();
    answers.firstMs = 1234.4;
    answered({1, 1, 1});
    EXPECT_EQ(Status::ok, found(check(), "qor.start").status);
    EXPECT_THAT(found(check(), "qor.start").what, HasSubstr("1234 ms"));
}

TEST_F(QorCheck, AnAddressThatIsNotFoundIsAProblem) {
    peer.isFound = false;
    peer.reason = "no such host";
    EXPECT_EQ(Status::problem, place().status);
    EXPECT_THAT(place().what, HasSubstr("no such host"));
    peer.isUsable = false;
    EXPECT_EQ(Status::problem, place().status) << "whatever the port is";
}

TEST_F(QorCheck, OfAPlaceThatTheSettingsDoNotNameTheirOwnFindingsTell) {
    peer.isUsable = false;
    EXPECT_THAT(check(), IsEmpty());
    EXPECT_FALSE(mayBeAsked(peer));
}

}  // namespace
