#include "start/Objections.h"

#include <gmock/gmock.h>

#include "support/TempFolder.h"

using namespace qorctl::doctor;
using qorctl::start::Objections;
using qorctl::start::Refusal;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

class ObjectionsTo : public testing::Test {
protected:
    TempFolder folder;
    PeerFacts peer;  // nobody is there
    const std::string port = "TcpPort=5000\n";

    Objections tcp(const std::string& lines) {
        return of("[CommonSettings]\nUseTcp=true\n" + lines);
    }
    Objections of(const std::string& text) {
        const auto settings = SettingsFacts::read(folder.writeText("qor.ini", text));
        HostPlace host;
        host.program = folder.pathOf("host.exe");
        return {settings, ExecutableFacts::gather(settings["QORexecutable"].text, host)};
    }
};

TEST_F(ObjectionsTo, AMissingExecutableCountsWhereNobodyIsKnownToBeOnly) {
    const Objections objections = tcp(port + "QORexecutable=none.exe\n");
    const auto never = objections.whyNever(peer);
    ASSERT_TRUE(never);
    EXPECT_THAT(never->what, HasSubstr("does not exist"));
    EXPECT_THAT(objections.notes(), IsEmpty());

    PeerFacts runs = peer;
    runs.servers = {Holder()};
    EXPECT_FALSE(objections.whyNever(runs));
    PeerFacts untold = peer;  // another machine, too
    untold.isTold = false;
    EXPECT_FALSE(objections.whyNever(untold));
    const Refusal reason = objections.asReason({"no answer"});
    EXPECT_THAT(reason.what, HasSubstr("does not exist"));
    EXPECT_THAT(reason.details, Contains("also:  no answer"));
}

TEST_F(ObjectionsTo, WhatKeepsThePlaceFromBeingFoundCountsEverywhere) {
    peer.isTold = false;
    const auto never = tcp("TcpPrt=5000\nQORexecutable=none.exe\n").whyNever(peer);
    ASSERT_TRUE(never);
    EXPECT_EQ("TcpPrt is not read: misspelt for TcpPort", never->what);
    EXPECT_THAT(never->details, Contains(StartsWith("also:  ")));
    EXPECT_THAT(never->details, Not(Contains(HasSubstr("none.exe"))));
    EXPECT_TRUE(of("[CommonSettings]\nServerPipeName=x\n").whyNever(peer));
    EXPECT_TRUE(of("[Common]\nUseTcp=true\n" + port).whyNever(peer));
    EXPECT_TRUE(of("\xEF\xBB\xBF[X]\n[CommonSettings]\nUseTcp=true\n" + port).whyNever(peer));
}

TEST_F(ObjectionsTo, AMisspeltKeyThatAHostDoesWithoutIsANoteAndTheReasonInTheEnd) {
    const Objections objections = tcp(port + "ServerIp2=h\n[Other]\nQORexecutable=q\n");
    EXPECT_FALSE(objections.whyNever(peer));
    EXPECT_THAT(
        objections.notes(),
        ElementsAre("ServerIp2 is not read: misspelt for ServerIp: write ServerIp in its place",
                    "QORexecutable stands in [Other], where it is not read: move it to "
                    "[CommonSettings]"));

    Refusal seen{"nobody is there", {"check: start QOR"}};
    seen.isForGood = false;
    const Refusal reason = objections.asReason(seen);
    EXPECT_EQ("ServerIp2 is not read: misspelt for ServerIp", reason.what);
    EXPECT_THAT(reason.details, Contains("also:  nobody is there"));
    EXPECT_EQ("check: start QOR", reason.details.back());
    EXPECT_FALSE(reason.isForGood);
    seen.isOccupied = true;
    EXPECT_EQ("nobody is there", objections.asReason(seen).what);
}

TEST_F(ObjectionsTo, UseTcpByAnotherNameIsNamedWhereTheTitlesAreMissed) {
    const auto never = of("[CommonSettings]\nUseTpc=true\n" + port).whyNever(peer);
    ASSERT_TRUE(never);
    EXPECT_EQ("UseTpc is not read: misspelt for UseTcp", never->what);
}

TEST_F(ObjectionsTo, CommentsAreNone) {
    for (const char* const mark : {"#", ";", "//", " # ", "// "}) {
        std::string lines = port;
        lines.append(mark).append("ServerIp=h\n").append(mark).append("QORexecutable=q\n");
        const Objections objections = tcp(lines);
        EXPECT_THAT(objections.notes(), IsEmpty()) << mark;
        EXPECT_FALSE(objections.whyNever(peer)) << mark;
        EXPECT_EQ("x", objections.asReason({"x"}).what) << mark;
    }
}

}  // namespace
