// What the simulated QOR is given as files: a model of an ECU or a script of faults. What is wrong
// in it is a ConfigError with words; a model that is right can be asked for its values at any time.
#include <nlohmann/json.hpp>

#include "model/ModelLoader.h"
#include "model/ParameterStore.h"
#include "script/ScriptLoader.h"
#include "Target.h"

namespace {

using simulator::ConfigError;
using simulator::JsonNode;
using simulator::ParameterStore;

/// In steps of 10 ms where a parameter follows a measurement.
constexpr std::uint64_t momentsMs[] = {0, 1, 999, 60000};

void useModel(const simulator::EcuModel& model) {
    FUZZ_REQUIRE(!model.parameters.empty());
    ParameterStore store(model.parameters);
    for (const std::uint64_t moment : momentsMs) {
        store.advanceTo(moment);
        for (std::uint32_t index = 0; index < model.parameters.size(); ++index) {
            FUZZ_REQUIRE(store.at(index) == store.find(model.parameters[index].name));
            const double first = store.firstValue(index);
            const auto arrays = store.read(index);
            FUZZ_REQUIRE(arrays.first.empty() || arrays.first.front() == first || first != first);
            if (!store.writeValues(index, arrays.first)) store.writeArrays(index, arrays);
            if (!store.startControl(index)) store.stopControl(index);
        }
    }
}

void useScript(simulator::Script script) {
    simulator::RequestFacts facts;
    for (std::uint32_t id = 0; id < 20; ++id) {
        facts.id = static_cast<simulator::CommandId>(id);
        script.actionFor(facts);
    }
    script.scheduledSince(simulator::Since::Start);
}

/// The first byte chooses between the two.
void tryOne(std::string_view bytes) {
    fuzz::Input input(bytes);
    const std::uint32_t choice = input.byte();
    const nlohmann::json document = nlohmann::json::parse(input.rest(), nullptr, false);
    if (document.is_discarded()) return;
    try {
        const JsonNode root(document, "file");
        if ((choice & 1) == 0) return useModel(simulator::modelFromJson(root));
        simulator::ScriptUse use;
        use.transport =
            (choice & 2) == 0 ? simulator::Transport::Tcp : simulator::Transport::WindowMessages;
        use.parameters = {"EngineSpeed", "IgnitionMap"};
        useScript(simulator::scriptFromJson(root, use));
    } catch (const ConfigError& error) {
        FUZZ_REQUIRE(*error.what() != '\0');
    }
}

const fuzz::Registered registered({"simfiles", tryOne});

}  // namespace
