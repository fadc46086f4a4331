#include "RandomMessages.h"

using nlohmann::json;

namespace {

/// One of each that is quick, with what is valid or nearly so.
const json& valid() {
    static const json all = json::parse(R"([
        ["getState", {}], ["pingQor", {"timeoutMs": 500}], ["cancelConnect", {}],
        ["getParamDescription", {"name": "EngineSpeed"}],
        ["getParamData", {"name": "DwellTime", "timeoutMs": 300}],
        ["getParamData", ["EngineSpeed", 300]],
        ["getParamDataAsString", {"name": "SoftwareVersion", "timeoutMs": 300}],
        ["getParamDataAtOnce", {"names": ["EngineSpeed", "OilPressure"], "timeoutMs": 300}],
        ["setParamData", {"name": "DwellTime", "values": [7, 5, 4, 3, 2],
                          "second": [8, 10, 12, 14, 16], "third": [], "timeoutMs": 300}],
        ["setDynamicData", {"name": "IdleSpeedTarget", "value": "900", "timeoutMs": 300}],
        ["startDirectCtrl", {"name": "CoolingFan", "timeoutMs": 300, "leaseMs": 50}],
        ["renewDirectCtrl", {"name": "CoolingFan", "leaseMs": 50}],
        ["stopDirectCtrl", {"name": "CoolingFan", "timeoutMs": 300}],
        ["getDtcByStatus", {"timeoutMs": 300}], ["clearDtc", [300]],
        ["sendKwpCommand", {"service": 62, "data": "0A 1f", "timeoutMs": 300}],
        ["getCanBusData", {"canIds": [512, 513], "timeoutMs": 300}],
        ["sendCanBusMsg", {"first": 512, "second": 0, "message": "01", "timeoutMs": 300}],
        ["startParamRead", {"names": ["EngineSpeed", "EngineLoad"], "slots": 10}],
        ["stopParamRead", {"stream": 3}], ["startDtcRead", {"timeoutMs": 300, "periodMs": 100}],
        ["stopDtcRead", {"stream": 4}], ["startTraceRead", {"tailBytes": 100}],
        ["stopTraceRead", {"stream": 5}], ["getParamNames", {}], ["getServerStatus", {}],
        ["answerBox", {"number": 1, "choice": 1}], ["getQorExecutablePath", {}]])");
    return all;
}

}  // namespace

unsigned RandomMessages::below(std::size_t count) {
    return static_cast<unsigned>(random_() % count);
}

json RandomMessages::anything(int depth) {
    switch (below(depth > 3 ? 9 : 12)) {
        case 0:
            return nullptr;
        case 1:
            return below(2) == 0;
        case 2:
            return static_cast<int>(random_());
        case 3:
            return 4294967296.0 * random_();
        case 4:
            return -1e308 * below(100);
        case 5:
            return std::string(below(300), static_cast<char>(' ' + below(95)));
        case 6:
            return "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80";
        case 7:
            return 0.1 * below(100);
        case 8:
            return "NaN";
        case 9:
            return json::array({anything(depth + 1), anything(depth + 1)});
        case 10:
            return json::array();
        default:
            return json{{"name", anything(depth + 1)}, {"", anything(depth + 1)}};
    }
}

void RandomMessages::change(json& value) {
    if (value.is_structured() && !value.empty() && below(4) != 0) {
        auto part = value.begin();
        std::advance(part, below(value.size()));
        if (below(6) == 0)
            value.erase(part);
        else
            change(*part);
        return;
    }
    if (value.is_object() && below(2) == 0)
        value["added"] = anything(0);
    else
        value = anything(0);
}

json RandomMessages::request() {
    const json& base = valid()[below(valid().size())];
    json made = {{"jsonrpc", "2.0"}, {"id", below(1000)}, {"method", base[0]}, {"params", base[1]}};
    for (unsigned changes = below(3); changes > 0; --changes)
        change(below(4) == 0 || !made.is_object() ? made : made["params"]);
    return made;
}

std::string RandomMessages::text() {
    std::string made = request().dump();
    for (unsigned changes = 1 + below(3); changes > 0 && !made.empty(); --changes) {
        const unsigned at = below(made.size());
        const char byte = static_cast<char>(below(256));
        if (below(3) == 0)
            made.erase(at, 1 + below(20));
        else if (below(2) == 0)
            made.insert(at, 1, byte == '\n' ? ' ' : byte);
        else
            made[at] = byte == '\n' ? ' ' : byte;
    }
    return made;
}
