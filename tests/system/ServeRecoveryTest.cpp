// "qorctl serve" whose QOR goes away and comes back.

#include "QorProcesses.h"
#include "ServeScene.h"

using nlohmann::json;
using testing::AnyOf;

namespace {

class ServeRecovery : public ServeScene {};

INSTANTIATE_TEST_SUITE_P(Over, ServeRecovery, everyTransport(), transportName);

TEST_P(ServeRecovery, TellsCausesWhileQorIsGoneAndGoesOnWhenItIsBack) {
    serveOurs();
    connectEcu();
    peer->resultOf("startDirectCtrl", {{"name", "CoolingFan"}});
    const json stream = peer->resultOf("startParamRead", {{"names", {"EngineSpeed"}}})["stream"];
    ASSERT_TRUE(peer->awaitEvent("values", [](const json&) { return true; }));
    qor::killAll();
    const json answer = peer->ask("pingQor", {{"timeoutMs", 500}});
    ASSERT_THAT(answer, IsError(-32000));
    EXPECT_THAT(answer["error"]["data"]["name"],
                AnyOf("noConnection", "qorSilent", "qorChanged", "refused"));
    EXPECT_FALSE(answer["error"]["data"]["check"].get<std::string>().empty());
    EXPECT_EQ(-32000, peer->errorOf("getParamDataAtOnce",
                                    {{"names", {"EngineSpeed"}}, {"timeoutMs", 500}}));
    EXPECT_TRUE(peer->resultOf("getState").is_object());
    station.startQorByHand();
    EXPECT_TRUE(eventually(15000, [&] {
        return peer->errorOf("pingQor", {{"timeoutMs", 500}}) == 0;
    }));
    connectEcu();
    const std::size_t before = peer->countOf("values");
    EXPECT_TRUE(eventually(10000, [&] { return peer->countOf("values") > before + 3; }))
        << "the stream does not go on";
    EXPECT_EQ(850, freshValueOf("IdleSpeedTarget"));
    // The new QOR knows nothing of the old one's control: it can be taken again.
    peer->resultOf("startDirectCtrl", {{"name", "CoolingFan"}, {"timeoutMs", 2000}});
}

TEST_P(ServeRecovery, EndsInOrderWhileQorIsGone) {
    serveOurs();
    peer->resultOf("startParamRead", {{"names", {"EngineSpeed"}}});
    qor::killAll();
    process->closeInput();
    const auto ended = process->wait(20000);
    EXPECT_NE(-1, ended.exitCode);
}

}  // namespace
