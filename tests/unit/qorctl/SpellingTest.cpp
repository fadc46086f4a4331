#include "Spelling.h"

#include <gtest/gtest.h>

using namespace qorctl;

TEST(Spelling, TheCaseOfLettersDoesNotCount) {
    EXPECT_TRUE(isSameName("tcpport", "TcpPort"));
    EXPECT_FALSE(isSameName("TcpPort ", "TcpPort"));
    EXPECT_FALSE(isMisspelling("TCPPORT", "TcpPort"));
}

TEST(Spelling, OneOrTwoLettersOffIsAMisspelling) {
    for (const char* const text :
         {"TcpPrt", "TcpProt", "Tcp_Port", "TcpPorts", "TPort", "tcp port"})
        EXPECT_TRUE(isMisspelling(text, "TcpPort")) << text;
    EXPECT_TRUE(isMisspelling("QORexecutabel", "QORexecutable"));
    EXPECT_TRUE(isMisspelling("UseTpc", "UseTcp"));
}

TEST(Spelling, AnotherNameIsNone) {
    for (const char* const text : {"UdpPath", "Port", "TcpTimeout", "", "UseIpc"})
        EXPECT_FALSE(isMisspelling(text, "TcpPort")) << text;
    EXPECT_FALSE(isMisspelling("UseCan", "UseTcp"));
    EXPECT_FALSE(isMisspelling("ClientPipeName", "ServerPipeName"));
}

TEST(Spelling, TheNearestOfManyIsFound) {
    const std::vector<std::string> names = {"get", "set", "get-string", "start-control"};
    EXPECT_EQ("get", nearestOf("gett", names));
    EXPECT_EQ("set", nearestOf("SETT", names));
    EXPECT_EQ("get-string", nearestOf("getstring", names));
    EXPECT_EQ("start-control", nearestOf("strat-control", names));
    EXPECT_EQ("", nearestOf("fly", names));
    EXPECT_EQ("", nearestOf("", names));
    EXPECT_EQ("", nearestOf("get", {}));
}

TEST(Spelling, WhereTheCaseOfLettersCountsTheSameNameInAnotherCaseIsTheNearest) {
    EXPECT_EQ("timeoutMs", nearestOf("timeoutMS", {"timeoutM", "timeoutMs", "timeoutMsx"}));
}

TEST(Spelling, OfATextThatIsMuchTooLongCostsNoMemory) {
    EXPECT_EQ("", nearestOf(std::string(30000000, 'a'), {"get", "start-control"}));
}
