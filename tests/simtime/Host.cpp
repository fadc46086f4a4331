#include "Host.h"

#include <algorithm>
#include <cstdlib>

#include "facade/FacadeImpl.h"
#include "facade/Quietly.h"
#include "qorcontrol/Outcome.h"
#include "qorcontrol/Waiting.h"
#include "Values.h"

using qorcontrol::Cause;
using qorcontrol::lastOutcome;

namespace simtime {
namespace {

using Numbers = std::vector<double>;

constexpr Ms resolveMs = 400;
constexpr Ms writeMs = 500;
/// QOR's time for what is answered with an acknowledgement alone, and is worth a wait.
constexpr Ms busMs = 10000;
constexpr Ms modelMs = 3000 + 5000 + 90000;
/// For who waits without limit: all that can be before him.
constexpr Ms queueMs = 300000;

}  // namespace

const std::vector<Host::Operation>& Host::sound() {
    static const std::vector<Operation> operations = {
        &Host::ping,         &Host::readNumber, &Host::readMap,    &Host::readText,
        &Host::readGroup,    &Host::describe,   &Host::writeMap,   &Host::writeNumber,
        &Host::writeDynamic, &Host::control,    &Host::readCodes,  &Host::clearCodes,
        &Host::sendKwp,      &Host::readCan,    &Host::sendCan,    &Host::readUnknown,
        &Host::readNumber,   &Host::readMap,    &Host::setSegment, &Host::openCan};
    return operations;
}

const std::vector<Host::Operation>& Host::all() {
    static const std::vector<Operation> operations = [] {
        std::vector<Operation> more = sound();
        more.insert(more.end(), {&Host::stream, &Host::stream, &Host::drainStream, &Host::askState,
                                 &Host::streamCodes});
        return more;
    }();
    return operations;
}

void Host::callAny() {
    Random& random = station_.random();
    if (!station_.mustSucceed() && random.oneIn(60)) return connect();
    if (!station_.mustSucceed() && random.oneIn(250)) return openModel();
    const auto& operations = all();
    (this->*operations[random.below(static_cast<unsigned int>(operations.size()))])();
}

void Host::callEach() {
    for (const Operation operation : sound()) (this->*operation)();
}

unsigned int Host::patience() {
    if (station_.mustSucceed()) return 2000;
    const unsigned int patience = station_.random().oneIn(10) ? 1 + station_.random().below(40)
                                                              : station_.random().between(50, 1000);
    station_.noteLongest(patience * 4 + resolveMs + writeMs);
    return patience;
}

bool Host::judge(const char* name, bool succeeded) {
    if (succeeded != (lastOutcome().cause == Cause::none))
        station_.complain(name, "the result does not fit the cause");
    if (!succeeded && station_.mustSucceed())
        station_.complain(name, "failed before a sound QOR: " + lastOutcome().sentence);
    return succeeded;
}

void Host::checkMade(const char* name, Ms made, Ms begin, bool mayBeCached) {
    if (made > station_.machine().now()) station_.complain(name, "a value from the future");
    if (lastOutcome().mayBelongToEarlier) return;
    const Ms oldest = mayBeCached && station_.hasCache() ? station_.oldestCachedMs() : 0;
    if (made + oldest >= begin) return;
    if (station_.qor().hasToldTwiceAt(made))
        station_.noteTakenForNext();
    else
        station_.complain(
            name, "a value of " + std::to_string(made) + " for a call of " + std::to_string(begin));
}

void Host::checkValue(const char* name, double value, unsigned int param, Ms begin,
                      bool mayBeCached) {
    const ValueOrigin origin = ValueOrigin::of(value);
    if (origin.param != param)
        station_.complain(name, std::string("a value of ") + std::to_string(origin.param) +
                                    " for " + paramNames[param]);
    checkMade(name, origin.made, begin, mayBeCached);
}

void Host::checkMark(const char* name, bool succeeded, std::uint64_t mark) {
    if (judge(name, succeeded) && !station_.qor().hasHandled(mark))
        station_.complain(name, "said to be done, and QOR has not done it");
}

void Host::ping() {
    const unsigned int ms = patience();
    judge("ping", station_.call("ping", ms * 2, [&] { return station_.facade().pingQor(ms); }));
}

void Host::readNumber() {
    const unsigned int ms = patience();
    const unsigned int param = station_.random().below(numberCount);
    const Ms begin = station_.machine().now();
    Numbers values;
    const bool succeeded = station_.call("read", ms * 2, [&] {
        return station_.facade().getParamData(paramNames[param], values, ms);
    });
    if (!judge("read", succeeded)) return;
    if (values.empty()) return station_.complain("read", "no value");
    for (const double value : values) checkValue("read", value, param, begin, true);
}

void Host::readMap() {
    const unsigned int ms = patience();
    const unsigned int param = firstMap + station_.random().below(mapCount);
    const Ms begin = station_.machine().now();
    Numbers first, second, third;
    const bool succeeded = station_.call("read map", ms * 2, [&] {
        return station_.facade().getParamData(paramNames[param], first, second, third, ms);
    });
    if (!judge("read map", succeeded)) return;
    if (first.empty() || first != second || first != third)
        return station_.complain("read map", "pieces of two answers");
    for (const double value : first) checkValue("read map", value, param, begin, true);
}

void Host::readText() {
    const unsigned int ms = patience();
    const Ms begin = station_.machine().now();
    std::string text;
    const bool succeeded = station_.call("read text", ms * 2, [&] {
        return station_.facade().getParamDataAsString(paramNames[textParam], text, ms);
    });
    if (judge("read text", succeeded))
        checkMade("read text", std::strtoull(text.c_str(), nullptr, 10), begin, true);
}

void Host::readGroup() {
    const unsigned int ms = patience();
    std::vector<unsigned int> params;
    std::vector<std::string> names;
    for (unsigned int param = 0; param < firstActuator; ++param) {
        if (!station_.random().oneIn(3)) continue;
        params.push_back(param);
        names.emplace_back(paramNames[param]);
    }
    const Ms begin = station_.machine().now();
    std::vector<Numbers> values;
    const bool succeeded = station_.call("read several", ms * 2, [&] {
        return station_.facade().getParamDataAtOnce(names, values, ms);
    });
    if (!judge("read several", succeeded)) return;
    if (values.size() != params.size()) return station_.complain("read several", "too few");
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i].empty()) return station_.complain("read several", "no value");
        checkValue("read several", values[i].front(), params[i], begin, false);
    }
}

void Host::readUnknown() {
    const unsigned int ms = patience();
    Numbers values;
    const bool succeeded = station_.call("read unknown", ms * 2, [&] {
        return station_.facade().getParamData(unknownParam, values, ms);
    });
    if (succeeded) station_.complain("read unknown", "succeeded");
    if (station_.mustSucceed() && lastOutcome().cause != Cause::unknownName)
        station_.complain("read unknown", lastOutcome().sentence);
}

void Host::describe() {
    const unsigned int param =
        station_.random().below(static_cast<unsigned int>(paramNames.size()));
    station_.noteLongest(resolveMs * 2);
    wex::ParamDescription description{};
    const bool succeeded = station_.call("describe", 3000, [&] {
        return station_.facade().getParamDescription(paramNames[param], description);
    });
    if (!judge("describe", succeeded)) return;
    if (description.text1 != paramNames[param] || description.threeArrays != isMap(param))
        station_.complain("describe", "the description of " + description.text1);
}

void Host::writeNumber() {
    const unsigned int ms = patience();
    const unsigned int param = station_.random().below(numberCount);
    const double value =
        ValueOrigin{station_.machine().now(), param, ValueOrigin::written}.encode();
    checkMark(
        "write",
        station_.call(
            "write", ms * 2,
            [&] { return station_.facade().setParamData(paramNames[param], {value}, {}, {}, ms); }),
        static_cast<std::uint64_t>(value));
}

void Host::writeMap() {
    const unsigned int ms = patience();
    const unsigned int param = firstMap + station_.random().below(mapCount);
    const double value =
        ValueOrigin{station_.machine().now(), param, ValueOrigin::written}.encode();
    const Numbers values = {value, value};
    checkMark("write map",
              station_.call("write map", ms * 2,
                            [&] {
                                return station_.facade().setParamData(paramNames[param], values,
                                                                      values, values, ms);
                            }),
              static_cast<std::uint64_t>(value));
}

void Host::writeDynamic() {
    const unsigned int ms = patience();
    const std::uint64_t mark = station_.nextMark();
    checkMark("write dynamic",
              station_.call("write dynamic", ms * 2,
                            [&] {
                                return station_.facade().setDynamicData(paramNames[firstActuator],
                                                                        std::to_string(mark), ms);
                            }),
              mark);
}

void Host::control() {
    const char* const name = paramNames[firstActuator + station_.random().below(actuatorCount)];
    unsigned int ms = patience();
    judge("start control", station_.call("start control", ms * 2, [&] {
        return station_.facade().startDirectCtrl(name, ms);
    }));
    ms = patience();
    judge("stop control", station_.call("stop control", ms * 2, [&] {
        return station_.facade().stopDirectCtrl(name, ms);
    }));
}

void Host::readCodes() {
    const unsigned int ms = patience();
    const Ms begin = station_.machine().now();
    std::vector<QorControlFacade::DtcDescription> codes;
    const bool succeeded = station_.call(
        "read codes", ms * 2, [&] { return station_.facade().getDtcByStatus(codes, ms); });
    if (!judge("read codes", succeeded)) return;
    if (codes.size() != 2) return station_.complain("read codes", "not those of QOR");
    checkMade("read codes", std::strtoull(codes.front().text1.c_str(), nullptr, 10), begin, false);
}

void Host::clearCodes() {
    const unsigned int ms = patience();
    judge("clear codes",
          station_.call("clear codes", ms, [&] { return station_.facade().clearDtc(ms); }));
}

void Host::sendKwp() {
    const unsigned int ms = patience();
    const std::string mark = std::to_string(station_.nextMark());
    QorControlFacade::KwpCommand kwp{0x1A, mark, 0};
    const bool succeeded =
        station_.call("kwp", ms * 2, [&] { return station_.facade().sendKwpCommand(kwp, ms); });
    if (!judge("kwp", succeeded) || lastOutcome().mayBelongToEarlier) return;
    if (kwp.data == "R" + mark) return;
    complainOfAnother("kwp", std::strtoull(kwp.data.erase(0, 1).c_str(), nullptr, 10));
}

void Host::readCan() {
    const unsigned int ms = patience();
    const auto mark = static_cast<unsigned int>(station_.nextMark());
    QorControlFacade::CanBusData frames{{{mark, 0}}};
    const bool succeeded = station_.call(
        "can values", ms * 2, [&] { return station_.facade().getCanBusData(frames, ms); });
    if (!judge("can values", succeeded) || lastOutcome().mayBelongToEarlier) return;
    if (frames.items.size() != 1 ||
        frames.items[0].value != static_cast<int>(frames.items[0].canId ^ 0x5A5Au))
        return station_.complain("can values", "none of QOR's");
    if (frames.items[0].canId != mark) complainOfAnother("can values", frames.items[0].canId);
}

void Host::complainOfAnother(const char* name, std::uint64_t mark) {
    if (station_.qor().hasToldTwice(mark))
        station_.noteTakenForNext();
    else
        station_.complain(name, "the answer to another: " + std::to_string(mark));
}

void Host::sendCan() {
    const unsigned int ms = patience();
    const std::uint64_t mark = station_.nextMark();
    checkMark("can message",
              station_.call(
                  "can message", ms * 2,
                  [&] { return station_.facade().sendCanBusMsg(1, 2, std::to_string(mark), ms); }),
              mark);
}

void Host::setSegment() {
    const std::uint64_t mark = station_.nextMark();
    station_.noteLongest(busMs);
    // Pushed out of the full queue, a call that dispatches messages waits for ever.
    checkMark("segment",
              station_.call("segment", queueMs,
                            [&] {
                                if (station_.mustSucceed())
                                    return station_.facade().setEcuSegment(std::to_string(mark),
                                                                           true, nullptr);
                                return quietly::setEcuSegment(
                                    FacadeAccess::stateOf(station_.facade()), std::to_string(mark),
                                    true);
                            }),
              mark);
}

void Host::openCan() {
    const auto mark = static_cast<unsigned int>(station_.nextMark());
    station_.noteLongest(busMs);
    checkMark("can bus",
              station_.call("can bus", queueMs,
                            [&] {
                                return qorcontrol::connectCanBusAndWait(
                                    station_.facade(), {mark, true, false},
                                    QorControlFacade::EcuConnect::Default);
                            }),
              mark);
}

void Host::connect() {
    station_.noteLongest(busMs);
    station_.connects(station_.random().between(300, 3000));
}

void Host::openModel() {
    const std::uint64_t mark = station_.nextMark();
    station_.noteLongest(modelMs);
    const QorControlFacade::ModelDescription model{1, std::to_string(mark), 0, "", 0, "", 0, {}};
    checkMark("model",
              station_.call("model", queueMs,
                            [&] { return qorcontrol::openModelAndWait(station_.facade(), model); }),
              mark);
}

void Host::stream() {
    Random& random = station_.random();
    endStreams();
    for (unsigned int param = 0; param < numberCount; ++param)
        if (random.oneIn(3)) streamed_.emplace_back(paramNames[param]);
    lastMade_ = {};
    station_.call("start stream", 0, [&] {
        return station_.facade().startParamRead(&station_.queue(number_), streamed_);
    });
}

void Host::endStreams() {
    if (streamed_.empty()) return;
    drainStream();
    station_.noteLongest(resolveMs * 2 * numberCount + writeMs);
    station_.call("stop stream", 0,
                  [&] { return station_.facade().stopParamRead(&station_.queue(number_)); });
    streamed_.clear();
}

void Host::drainStream() {
    std::vector<QorControlFacade::ParamValue> batch;
    for (int i = 0; i < 8; ++i) {
        const bool isThere = station_.call(
            "stream", 20, [&] { return station_.queue(number_).pop(batch, 20) || true; });
        if (!isThere) return;
        for (const auto& value : batch) {
            const auto known = std::find(paramNames.begin(), paramNames.end(), value.name);
            if (known == paramNames.end() || value.values.size() != 1)
                return station_.complain("stream", "no value of ours");
            const auto param = static_cast<unsigned int>(known - paramNames.begin());
            if (ValueOrigin::of(value.values[0]).param != param)
                station_.complain("stream", "a value of another than " + value.name);
        }
        batch.clear();
    }
}

void Host::streamCodes() {
    if (number_ != 0) return askState();
    QorControlFacade& facade = station_.facade();
    DtcQueue& queue = station_.dtcQueue();
    station_.noteLongest(800);
    station_.call("start codes", 0, [&] { return facade.startDtcRead(&queue, 200, 100); });
    std::vector<QorControlFacade::DtcDescription> codes;
    station_.call("codes", 300, [&] { return queue.pop(codes, 300) || true; });
    station_.call("stop codes", 0, [&] { return facade.stopDtcRead(); });
}

void Host::askState() {
    station_.call("state", 0, [&] {
        station_.facade().isEcuOnline();
        station_.facade().isConnecting();
        return !station_.facade().getQorExecutablePath().empty();
    });
}

}  // namespace simtime
