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
/// Among the topics: no parameter of QOR's.
constexpr auto unknown = static_cast<unsigned int>(paramNames.size());

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

Question Host::ask(Topics topics, bool mayBeCached) {
    ++calls_;
    return {std::move(topics), station_.machine().now(), mayBeCached && station_.hasCache()};
}

Ms Host::cachedMs(const Question& question) const {
    return question.mayBeCached ? station_.oldestCachedMs() : 0;
}

bool Host::judge(const char* name, bool succeeded, const Question& question) {
    if (succeeded != (lastOutcome().cause == Cause::none))
        station_.complain(name, "the result does not fit the cause");
    if (!succeeded && station_.mustSucceed())
        station_.complain(name, "failed before a sound QOR: " + lastOutcome().sentence);
    checkWarning(name, question);
    return succeeded;
}

/// Of what QOR has told once and in time no answer may be marked as perhaps another request's.
void Host::checkWarning(const char* name, const Question& question) {
    const Ms since = question.begin - std::min(question.begin, cachedMs(question));
    const bool isDoubtful = station_.qor().ledger().isDoubtful(question.topics, since);
    const bool isMarked = lastOutcome().mayBelongToEarlier;
    if (isMarked && !isDoubtful)
        station_.complain(name, "marked, though nothing of it was owed");
    else if (lastOutcome().cause == Cause::none && !question.topics.empty())
        station_.noteAnswer(isDoubtful, isMarked);
}

void Host::checkMade(const char* name, Ms made, const Topic& topic, const Question& question) {
    if (made > station_.machine().now()) station_.complain(name, "a value from the future");
    if (lastOutcome().mayBelongToEarlier) return;
    if (made + cachedMs(question) >= question.begin) return;
    const std::uint64_t call = calls_ * (hostCount + 1) + number_;
    if (station_.qor().ledger().explains(topic, made, call, cachedMs(question)))
        station_.noteTakenForNext();
    else
        station_.complain(name, "a value of " + std::to_string(made) + " for a call of " +
                                    std::to_string(question.begin));
}

void Host::checkValues(const char* name, const Numbers& values, const Topic& topic,
                       const Question& question) {
    if (values.empty()) return station_.complain(name, "no value");
    if (std::count(values.begin(), values.end(), values.front()) !=
        static_cast<std::ptrdiff_t>(values.size()))
        station_.complain(name, "values of two answers");
    const ValueOrigin origin = ValueOrigin::of(values.front());
    if (origin.param != topic.param)
        station_.complain(name, std::string("a value of ") + std::to_string(origin.param) +
                                    " for " + paramNames[topic.param]);
    checkMade(name, origin.made, topic, question);
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
    const Question question = ask({{Topic::values, param}}, true);
    Numbers values;
    const bool succeeded = station_.call("read", ms * 2, [&] {
        return station_.facade().getParamData(paramNames[param], values, ms);
    });
    if (judge("read", succeeded, question))
        checkValues("read", values, question.topics.front(), question);
}

void Host::readMap() {
    const unsigned int ms = patience();
    const unsigned int param = firstMap + station_.random().below(mapCount);
    const Question question = ask({{Topic::arrays, param}}, true);
    Numbers first, second, third;
    const bool succeeded = station_.call("read map", ms * 2, [&] {
        return station_.facade().getParamData(paramNames[param], first, second, third, ms);
    });
    if (!judge("read map", succeeded, question)) return;
    if (first != second || first != third)
        return station_.complain("read map", "pieces of two answers");
    checkValues("read map", first, question.topics.front(), question);
}

void Host::readText() {
    const unsigned int ms = patience();
    const Question question = ask({{Topic::values, textParam}}, true);
    std::string text;
    const bool succeeded = station_.call("read text", ms * 2, [&] {
        return station_.facade().getParamDataAsString(paramNames[textParam], text, ms);
    });
    if (judge("read text", succeeded, question))
        checkMade("read text", std::strtoull(text.c_str(), nullptr, 10), question.topics.front(),
                  question);
}

void Host::readGroup() {
    const unsigned int ms = patience();
    Topics topics;
    std::vector<std::string> names;
    for (unsigned int param = 0; param < firstActuator; ++param) {
        if (!station_.random().oneIn(3)) continue;
        topics.push_back({Topic::values, param});
        names.emplace_back(paramNames[param]);
    }
    const Question question = ask(topics);
    std::vector<Numbers> values;
    const bool succeeded = station_.call("read several", ms * 2, [&] {
        return station_.facade().getParamDataAtOnce(names, values, ms);
    });
    if (!judge("read several", succeeded, question)) return;
    if (values.size() != topics.size()) return station_.complain("read several", "too few");
    for (std::size_t i = 0; i < values.size(); ++i)
        checkValues("read several", values[i], topics[i], question);
}

void Host::readUnknown() {
    const unsigned int ms = patience();
    const Question question = ask({{Topic::description, unknown}});
    Numbers values;
    const bool succeeded = station_.call("read unknown", ms * 2, [&] {
        return station_.facade().getParamData(unknownParam, values, ms);
    });
    if (succeeded) station_.complain("read unknown", "succeeded");
    if (station_.mustSucceed() && lastOutcome().cause != Cause::unknownName)
        station_.complain("read unknown", lastOutcome().sentence);
    checkWarning("read unknown", question);
}

void Host::describe() {
    const unsigned int param =
        station_.random().below(static_cast<unsigned int>(paramNames.size()));
    station_.noteLongest(resolveMs * 2);
    const Question question = ask({{Topic::description, param}});
    wex::ParamDescription description{};
    const bool succeeded = station_.call("describe", 3000, [&] {
        return station_.facade().getParamDescription(paramNames[param], description);
    });
    if (!judge("describe", succeeded, question)) return;
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
    const Question question = ask({{Topic::codes}});
    std::vector<QorControlFacade::DtcDescription> codes;
    const bool succeeded = station_.call(
        "read codes", ms * 2, [&] { return station_.facade().getDtcByStatus(codes, ms); });
    if (!judge("read codes", succeeded, question)) return;
    if (codes.size() != 2) return station_.complain("read codes", "not those of QOR");
    checkMade("read codes", std::strtoull(codes.front().text1.c_str(), nullptr, 10),
              question.topics.front(), question);
}

void Host::clearCodes() {
    const unsigned int ms = patience();
    judge("clear codes",
          station_.call("clear codes", ms, [&] { return station_.facade().clearDtc(ms); }));
}

void Host::sendKwp() {
    const unsigned int ms = patience();
    const std::string mark = std::to_string(station_.nextMark());
    const Question question = ask({{Topic::kwp}});
    QorControlFacade::KwpCommand kwp{0x1A, mark, 0};
    const bool succeeded =
        station_.call("kwp", ms * 2, [&] { return station_.facade().sendKwpCommand(kwp, ms); });
    if (!judge("kwp", succeeded, question) || lastOutcome().mayBelongToEarlier) return;
    if (kwp.data == "R" + mark) return;
    complainOfAnother("kwp", Topic::kwp, std::strtoull(kwp.data.erase(0, 1).c_str(), nullptr, 10));
}

void Host::readCan() {
    const unsigned int ms = patience();
    const auto mark = static_cast<unsigned int>(station_.nextMark());
    const Question question = ask({{Topic::canValues}});
    QorControlFacade::CanBusData frames{{{mark, 0}}};
    const bool succeeded = station_.call(
        "can values", ms * 2, [&] { return station_.facade().getCanBusData(frames, ms); });
    if (!judge("can values", succeeded, question) || lastOutcome().mayBelongToEarlier) return;
    if (frames.items.size() != 1 ||
        frames.items[0].value != static_cast<int>(frames.items[0].canId ^ 0x5A5Au))
        return station_.complain("can values", "none of QOR's");
    if (frames.items[0].canId != mark)
        complainOfAnother("can values", Topic::canValues, frames.items[0].canId);
}

void Host::complainOfAnother(const char* name, Topic::Kind kind, std::uint64_t mark) {
    if (station_.qor().ledger().explains({kind}, mark, calls_ * (hostCount + 1) + number_))
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
