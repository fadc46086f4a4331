#include "Models.h"

#include <algorithm>

#include "QorProcesses.h"
#include "support/TempFolder.h"

nlohmann::json shippedModel() {
    const std::string program = qor::executable();
    const std::string folder = program.substr(0, program.find_last_of('\\') + 1);
    return nlohmann::json::parse(bytesOfFile(folder + "engine.json"));
}

std::string modelInOppositeOrder() {
    auto model = shippedModel();
    auto& parameters = model["parameters"];
    std::reverse(parameters.begin(), parameters.end());
    return model.dump();
}

std::string modelExporting(int bytes, int addBytes) {
    auto model = shippedModel();
    auto& edit = model["edit"];
    edit["delayMs"] = 10;
    edit.erase("exportBytes");
    edit.erase("addExportBytes");
    if (bytes >= 0) edit["exportBytes"] = bytes;
    if (addBytes >= 0) edit["addExportBytes"] = addBytes;
    return model.dump();
}
