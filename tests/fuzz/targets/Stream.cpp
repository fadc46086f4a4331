// The TCP transport with the real client behind it: QOR sends what the input says, cut where it
// says, while the client waits for answers. Threads run in turns, time jumps.
#include "client/ParamTables.h"
#include "ClientCalls.h"
#include "ScriptedQor.h"
#include "Target.h"
#include "transport/ClientSocketCommandFactory.h"
#include "Turns.h"

namespace {

constexpr const char* qorName = "/qor";
/// Besides what the client keeps of QOR: connections, requests, the loans of the latest hundred.
constexpr std::size_t otherBytes = 8u << 20;

void play(std::string_view bytes) {
    fuzz::Input input(bytes);
    const std::size_t heapBefore = fuzz::heapBytes();
    fuzz::ScriptedQor qor(qorName, input);
    IExternalCommandFactory* transport = nullptr;
    const auto client = fuzz::makeClient([&](ICommandReceiver& receiver) {
        auto made = std::make_unique<ClientSocketCommandFactory>(qorName, 0, receiver);
        transport = made.get();
        return made;
    });
    for (int calls = 0; calls < 40 && !input.isEmpty(); ++calls) fuzz::callClient(*client, input);
    // Nothing that QOR sends ends the worker.
    FUZZ_REQUIRE(transport->sendIf(nullptr, std::make_unique<CommandPing>(), 50) !=
                 Delivery::broken);
    FUZZ_REQUIRE(fuzz::heapBytes() <= heapBefore + ParamTables::maxBytes + otherBytes);
}

void tryOne(std::string_view bytes) {
    turns::execute([bytes] { play(bytes); });
}

const fuzz::Registered registered({"stream", tryOne});

}  // namespace
