#include <gtest/gtest.h>

#include <stdexcept>

#include "serve/http/HttpLink.h"

using qorctl::serve::http::Address;

namespace {

TEST(HttpAddress, IsAPortOrAnAddressWithOne) {
    EXPECT_EQ("127.0.0.1", Address::parse("8080").host);
    EXPECT_EQ(8080, Address::parse("8080").port);
    EXPECT_EQ("127.0.0.1", Address::parse(":0").host);
    EXPECT_EQ(0, Address::parse(":0").port);
    EXPECT_EQ("0.0.0.0", Address::parse("0.0.0.0:65535").host);
    EXPECT_EQ(65535, Address::parse("0.0.0.0:65535").port);
    EXPECT_EQ("::1", Address::parse("[::1]:80").host);
}

TEST(HttpAddress, ThatIsNoneIsRefused) {
    for (const char* text : {"", ":", "x", "127.0.0.1", "127.0.0.1:", "127.0.0.1:x", "65536", "-1",
                             "1e3", "127.0.0.1:123456", ":+1"})
        EXPECT_THROW(Address::parse(text), std::invalid_argument) << text;
}

TEST(HttpAddress, KnowsWhichOnesOnlyThisMachineReaches) {
    for (const char* text : {"1", "localhost:1", "127.9.9.9:1", "[::1]:1"})
        EXPECT_TRUE(Address::parse(text).isLoopback()) << text;
    for (const char* text : {"0.0.0.0:1", "10.0.0.1:1", "[::]:1", "station:1"})
        EXPECT_FALSE(Address::parse(text).isLoopback()) << text;
}

}  // namespace
