#include "serve/http/Gate.h"

#include <gmock/gmock.h>

#include <fstream>
#include <stdexcept>

#include "support/TempFolder.h"

using qorctl::serve::http::Gate;
using qorctl::serve::http::isSameSecret;
using qorctl::serve::http::tokenIn;

namespace {

const char* const json = "application/json";
const std::string secret = "0123456789abcdef";

Gate open() {
    return Gate({"", {"STATION7"}});
}

Gate guarded() {
    return Gate({secret, {}});
}

/// The status of the refusal; 0: admitted.
int asked(const Gate& gate, const Gate::Visit& visit) {
    const auto refusal = gate.refusalOf(visit);
    return refusal ? refusal->status : 0;
}

TEST(Gate, AdmitsByAnAddressByLocalhostAndByItsOwnNames) {
    for (const char* host : {"127.0.0.1:8080", "10.0.0.7", "[::1]:80", "localhost", "LOCALHOST:1",
                             "station7:8080", "Station7"})
        EXPECT_EQ(0, asked(open(), {"GET", "/metrics", host, "", "", ""})) << host;
}

TEST(Gate, RefusesNamesThatSomebodyCouldPointAtThisMachine) {
    for (const char* host : {"", "evil.example", "evil.example:8080", "127.0.0.1.evil.example",
                             "localhost.evil.example", "1.2.3", "127.0.0.1:80:80", "[::1", ":"})
        EXPECT_EQ(403, asked(open(), {"GET", "/", host, "", "", ""})) << host;
}

TEST(Gate, RefusesPagesOfOtherServers) {
    const std::string host = "127.0.0.1:8080";
    EXPECT_EQ(0, asked(open(), {"POST", "/rpc", host, "http://127.0.0.1:8080", "", json}));
    for (const char* origin : {"http://127.0.0.1:8081", "https://127.0.0.1:8080", "null",
                               "http://evil.example", "http://127.0.0.1:8080.evil.example"})
        EXPECT_EQ(403, asked(open(), {"POST", "/rpc", host, origin, "", json})) << origin;
}

TEST(Gate, RefusesWhatAPageOfAnotherServerFetchesWithoutSayingSoButNotALinkToThePage) {
    const std::string host = "127.0.0.1:8080";
    for (const char* site : {"", "same-origin", "none"})
        EXPECT_EQ(0, asked(open(), {"GET", "/events", host, "", "", "", site})) << site;
    for (const char* site : {"cross-site", "same-site", "x"}) {
        EXPECT_EQ(403, asked(open(), {"GET", "/events", host, "", "", "", site})) << site;
        EXPECT_EQ(0, asked(open(), {"GET", "/", host, "", "", "", site})) << site;
    }
}

TEST(Gate, KnowsThreeMethodsSoThatNoOtherBodyIsEverRead) {
    for (const char* method : {"PUT", "PATCH", "DELETE", "OPTIONS", "TRACE", "CONNECT", "post", ""})
        EXPECT_EQ(405, asked(open(), {method, "/rpc", "127.0.0.1", "", "", json})) << method;
    EXPECT_EQ(0, asked(open(), {"HEAD", "/", "127.0.0.1", "", "", ""}));
}

TEST(Gate, WantsJsonSoThatNoFormOfAPageIsEnough) {
    const std::string host = "127.0.0.1";
    for (const char* type : {"application/json", "Application/JSON", "application/json; charset=x"})
        EXPECT_EQ(0, asked(open(), {"POST", "/rpc", host, "", "", type})) << type;
    for (const char* type : {"", "text/plain", "application/jsonx", "multipart/form-data"})
        EXPECT_EQ(415, asked(open(), {"POST", "/rpc", host, "", "", type})) << type;
}

TEST(Gate, WithATokenAdmitsOnlyThoseWhoKnowItAndEverybodyToThePage) {
    const std::string host = "127.0.0.1";
    EXPECT_EQ(0, asked(guarded(), {"GET", "/", host, "", "", ""}));
    EXPECT_EQ(0, asked(guarded(), {"GET", "/events", host, "", "Bearer " + secret, ""}));
    for (const std::string& said :
         {std::string(), secret, std::string("Bearer "), "Bearer " + secret + "x",
          "bearer " + secret, std::string("Bearer 0123456789abcdeF")})
        EXPECT_EQ(401, asked(guarded(), {"GET", "/events", host, "", said, ""})) << said;
    EXPECT_EQ(401, asked(guarded(), {"POST", "/", host, "", "", json}));
}

TEST(Gate, ComparesSecretsOfAllLengths) {
    EXPECT_TRUE(isSameSecret("", ""));
    EXPECT_TRUE(isSameSecret("ab", "ab"));
    EXPECT_FALSE(isSameSecret("", "ab"));
    EXPECT_FALSE(isSameSecret("ab", ""));
    EXPECT_FALSE(isSameSecret("a", "ab"));
    EXPECT_FALSE(isSameSecret("abab", "ab"));
}

TEST(Gate, TakesTheFirstLineOfAFileAsItsToken) {
    const TempFolder folder;
    const auto tokenOf = [&](const std::string& content) {
        const std::string path = folder.path() + "\\token";
        std::ofstream(path, std::ios::binary) << content;
        return tokenIn(path);
    };
    EXPECT_EQ(secret, tokenOf(secret));
    EXPECT_EQ(secret, tokenOf(secret + "\r\nsomething else\n"));
    for (const std::string& bad : {std::string(), std::string("short\n"), "\n" + secret,
                                   secret + " x\n", secret + "\t", std::string(1025, 'a')})
        EXPECT_THROW(tokenOf(bad), std::runtime_error) << bad;
    EXPECT_THROW(tokenIn(folder.path() + "\\nothing"), std::runtime_error);
}

}  // namespace
