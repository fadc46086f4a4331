// The operations that change something, and those of diagnosis.

#include "Writes.h"

#include "Reads.h"
#include "Turn.h"

namespace soak {

namespace {

constexpr unsigned codeCount = 5;
constexpr unsigned firstCode = 0x2100;
constexpr unsigned kwpService = 0x21;
constexpr unsigned kwpData = 16;
constexpr unsigned firstCanId = 0x100;
constexpr unsigned canIds = 16;
constexpr int canOffset = 7000;

}  // namespace

bool writeOwn(Turn& turn) {
    Worker& worker = turn.worker;
    const unsigned count = ++worker.written;
    const bool ok = turn.make(2 * turn.timeoutMs, [&] {
        return turn.qor.setParamData(numbered(ownStem, worker.number),
                                     {worker.number * ownUnit + count}, {}, {}, turn.timeoutMs);
    });
    if (ok) {
        worker.confirmed = count;
        worker.confirmedLife = turn.lifeOfCall();
    }
    return ok;
}

bool writeText(Turn& turn) {
    Worker& worker = turn.worker;
    const std::string name = numbered(textStem, worker.number);
    const unsigned count = ++worker.textsWritten;
    const bool ok = turn.make(2 * turn.timeoutMs, [&] {
        return turn.qor.setDynamicData(name, name + ":" + std::to_string(count), turn.timeoutMs);
    });
    if (ok) {
        worker.textsConfirmed = count;
        worker.textConfirmedUs = nowUs();
    }
    return ok;
}

bool control(Turn& turn) {
    const std::string name = numbered(actuatorStem, turn.worker.number);
    const unsigned T = turn.timeoutMs;
    bool ok = turn.make(2 * T, [&] { return turn.qor.startDirectCtrl(name, T); });
    const double position = turn.worker.number * 100 + turn.dice.below(100);
    ok = turn.make(2 * T, [&] { return turn.qor.setParamData(name, {position}, {}, {}, T); }) && ok;
    return turn.make(2 * T, [&] { return turn.qor.stopDirectCtrl(name, T); }) && ok;
}

bool selectSegment(Turn& turn) {
    const bool ok = turn.makeUntimed([&] {
        return turn.qor.setEcuSegment(QorControlFacade::getEdcRomSegmentName(), true, nullptr);
    });
    return turn.makeUntimed([&] {
        return turn.qor.setEcuSegment(QorControlFacade::getEdcRamSegmentName(), true, nullptr);
    }) && ok;
}

bool clearCodes(Turn& turn) {
    return turn.make(turn.timeoutMs, [&] { return turn.qor.clearDtc(turn.timeoutMs); });
}

bool readCodes(Turn& turn) {
    std::vector<QorControlFacade::DtcDescription> codes;
    const bool ok = turn.make(2 * turn.timeoutMs,
                              [&] { return turn.qor.getDtcByStatus(codes, turn.timeoutMs); });
    if (!ok) return false;
    bool fits = codes.empty() || codes.size() == codeCount;
    for (unsigned i = 0; i < codes.size(); ++i)
        fits = fits && codes[i].code == firstCode + i && codes[i].text1 == numbered("Code", i);
    turn.judge.expect(fits, turn.where, "wrong trouble codes");
    return true;
}

bool sendKwp(Turn& turn) {
    const unsigned data = turn.dice.below(kwpData);
    QorControlFacade::KwpCommand kwp = {kwpService, std::string(1, static_cast<char>(data)), 0};
    turn.where += " " + std::to_string(data);
    const bool ok =
        turn.make(2 * turn.timeoutMs, [&] { return turn.qor.sendKwpCommand(kwp, turn.timeoutMs); });
    if (!ok || kwp.failed != 0) return ok;
    const std::string wanted = {static_cast<char>(kwpService + 0x40), static_cast<char>(data),
                                static_cast<char>(255 - data)};
    turn.judge.expect(kwp.data == wanted || qorMayMeanEarlier() || !turn.judge.isStrict, turn.where,
                      "the answer to another KWP request");
    return true;
}

bool readCan(Turn& turn) {
    QorControlFacade::CanBusData data;
    const unsigned first = turn.dice.below(canIds);
    for (unsigned i = 0; i < 3; ++i) data.items.push_back({firstCanId + (first + i) % canIds, 0});
    const QorControlFacade::CanBusData asked = data;
    const bool ok =
        turn.make(2 * turn.timeoutMs, [&] { return turn.qor.getCanBusData(data, turn.timeoutMs); });
    if (!ok) return false;
    bool fits = data.items.size() == asked.items.size();
    for (std::size_t i = 0; fits && i < data.items.size(); ++i)
        fits = data.items[i].canId == asked.items[i].canId;
    turn.judge.expect(fits || qorMayMeanEarlier() || !turn.judge.isStrict, turn.where,
                      "CAN values that another request asked for");
    for (const auto& item : data.items)
        turn.judge.expect(item.value == canOffset + static_cast<int>(item.canId), turn.where,
                          "a wrong CAN value");
    return true;
}

bool sendCan(Turn& turn) {
    return turn.make(2 * turn.timeoutMs, [&] {
        return turn.qor.sendCanBusMsg(0x900, turn.worker.number, "soak", turn.timeoutMs);
    });
}

}  // namespace soak
