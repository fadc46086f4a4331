#include "doctor/Spelling.h"

#include <gtest/gtest.h>

using namespace qorctl::doctor;

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
