#include "Warming.h"

#include "Reads.h"
#include "Turn.h"
#include "Writes.h"

namespace soak {

namespace {

constexpr const char* nobody = "Nobody";

void callAboutNobody(Turn& turn) {
    const QorControlFacade& qor = turn.qor;
    const unsigned T = turn.timeoutMs;
    std::string text;
    std::vector<std::vector<double>> arrays;
    const auto fails = [&](auto call) {
        turn.judge.expect(!turn.make(2 * T, call), turn.where, "it worked with nobody");
    };
    readUnknown(turn);
    fails([&] { return qor.setParamData(nobody, {1}, {}, {}, T); });
    fails([&] { return qor.setDynamicData(nobody, "1", T); });
    fails([&] { return qor.startDirectCtrl(nobody, T); });
    fails([&] { return qor.stopDirectCtrl(nobody, T); });
    fails([&] { return qor.getParamDataAsString(nobody, text, T); });
    fails([&] { return qor.getParamDataAtOnce({nobody}, arrays, T); });
}

}  // namespace

void callEachOnce(Turn& turn) {
    callAboutNobody(turn);
    ping(turn);
    describe(turn);
    clearCodes(turn);
    readCodes(turn);
    sendKwp(turn);
    readCan(turn);
    sendCan(turn);
}

}  // namespace soak
