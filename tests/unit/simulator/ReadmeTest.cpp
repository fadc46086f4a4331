// What simulator/README.md shows is what the simulator does.

#include <algorithm>
#include <fstream>

#include "behaviour/RequestFacts.h"
#include "TestSupport.h"

namespace simulator::test {
namespace {

std::vector<std::string> linesOfReadme() {
    std::ifstream file(SIMULATOR_README);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

/// The block of JSON that follows the line `before`.
std::string exampleBehind(const std::string& before) {
    const auto lines = linesOfReadme();
    auto line = std::find(lines.begin(), lines.end(), before);
    line = std::find(line, lines.end(), "```json");
    std::string text;
    for (; line != lines.end() && *++line != "```";) text += *line + "\n";
    return text;
}

Script scriptFor(const EcuModel& model, const std::string& text) {
    const nlohmann::json document = nlohmann::json::parse(text);
    return scriptFromJson(JsonNode(document, "README.md"),
                          {600, Transport::Tcp, namesOf(model.parameters)});
}

Record readOf(const ParameterStore& parameters, const std::string& name) {
    DirectCtrlPayload payload;
    payload.index = static_cast<std::uint32_t>(parameters.indexOf(*parameters.find(name)));
    payload.operation = DirectCtrlPayload::Read;
    return {CommandId::DirectCtrl, false, 1, payload.write()};
}

TEST(Readme, TheFirstExampleOfAScriptLoads) {
    const EcuModel model = loadModel(SHIPPED_MODEL);
    EXPECT_TRUE(scriptFor(model, exampleBehind("## Script file")).bootstrap());
}

TEST(Readme, TheRuleForEveryReadFiresOnEveryReadOfItsParameterOnly) {
    const EcuModel model = loadModel(SHIPPED_MODEL);
    const ParameterStore parameters(model.parameters);
    Script script = scriptFor(model, exampleBehind("### A rule that fires on every read"));
    const auto delayOf = [&](const std::string& name) {
        return script.actionFor(factsOf(readOf(parameters, name), parameters)).delayMs;
    };
    for (int read = 0; read < 5; ++read) {
        EXPECT_EQ(delayOf("EngineSpeed"), 250U) << read;
        EXPECT_EQ(delayOf("OilPressure"), 0U) << read;
    }
}

TEST(Readme, TheTableOfCommandIdsIsComplete) {
    std::string rows;
    for (const std::string& line : linesOfReadme()) {
        if (line.rfind("| ", 0) == 0) rows += line + "\n";
    }
    for (int id = 0; id < 20; ++id) {
        const std::string name = commandName(static_cast<CommandId>(id));
        const std::string row = "| " + std::to_string(id) + " | `" + name + "` |";
        EXPECT_EQ(rows.find(row) != std::string::npos, id != 13) << row;
    }
}

}  // namespace
}  // namespace simulator::test
