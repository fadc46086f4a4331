#include "Qor.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "protocol/RecordStream.h"

namespace simtime {
namespace {

constexpr std::int32_t ecuOnline = -10;
constexpr std::int32_t progress = -11;
constexpr std::int32_t result = -12;
constexpr double succeeded = -1;
constexpr double failed = -2;
constexpr std::uint32_t indicesPerEpoch = 100;
/// So long a message box is told of before it opens and behind its end.
constexpr Ms boxSlackMs = 100;

template <class... Commands>
std::vector<std::unique_ptr<ExternalCommand>> make() {
    std::vector<std::unique_ptr<ExternalCommand>> commands;
    (commands.push_back(std::make_unique<Commands>()), ...);
    return commands;
}

Machine& machine() {
    return Machine::present();
}

std::string bytesOf(const ExternalCommand& command) {
    std::string bytes;
    command.write(bytes);
    return bytes;
}

std::uint64_t markOf(const std::string& text) {
    return std::strtoull(text.c_str(), nullptr, 10);
}

}  // namespace

std::string Mood::describe() const {
    std::string all;
    const auto add = [&](const char* name, unsigned int percent) {
        if (percent != 0) all += std::string(", ") + name + ' ' + std::to_string(percent);
    };
    add("late", late);
    add("silent", silent);
    add("refused", refused);
    add("twice", twice);
    add("disordered", disordered);
    add("foreign", foreign);
    add("cut", cut);
    return all;
}

Qor::Qor(Naming naming, unsigned int streamPeriodMs)
    : naming_(naming),
      streamPeriodMs_(streamPeriodMs),
      prototypes_(make<CommandPing, CommandStartEdit, CommandKwpConnect, CommandGetParamInfo,
                       CommandShutdown, CommandSetParamList, CommandDirectCtrl,
                       CommandEcuToolRoutine, CommandGetDTC, CommandRedirectUI, CommandStaticParam,
                       CommandEcuSegment, CommandExecKwp, CommandCanBusConnect, CommandCanBusData,
                       CommandReadTogether, CommandCanBusSend>()) {
    Network::present().onCall = [this](const std::shared_ptr<Line>& line) { accept(line); };
}

void Qor::start() {
    if (runs_) return;
    runs_ = true;
    isHung_ = isConnected_ = false;
    firstIndex_ += indicesPerEpoch;
    Network::present().set(Network::Door::open);
}

void Qor::end(bool isReset) {
    if (!runs_) return;
    dropConnection(isReset);
    runs_ = false;
    Network::present().set(machine().random().oneIn(2) ? Network::Door::refuses
                                                       : Network::Door::silent);
}

void Qor::dropConnection(bool isReset) {
    if (line_) {
        line_->onBytes = nullptr;
        line_->hangUp(isReset);
    }
    line_.reset();
    ledger_.begin();
    unparsed_.clear();
    subscribed_.clear();
    ++series_;
    ++connects_;
}

void Qor::setHung(bool isHung) {
    isHung_ = isHung;
    if (line_) line_->setReading(!isHung);
}

void Qor::accept(const std::shared_ptr<Line>& line) {
    dropConnection(false);
    line_ = line;
    line_->onBytes = [this, weak = std::weak_ptr<Line>(line)](const std::string& bytes,
                                                              std::uint64_t known) {
        if (const auto present = weak.lock()) onBytes(present, bytes, known);
    };
    if (isHung_) line_->setReading(false);
}

void Qor::onBytes(const std::shared_ptr<Line>& line, const std::string& bytes,
                  std::uint64_t known) {
    if (line != line_) return;
    if (bytes.empty()) return dropConnection(false);
    if (unparsed_.empty()) known_ = known;
    unparsed_ += bytes;
    while (line_ == line) {
        const auto framed = protocol::recordAt(unparsed_, 0);
        if (framed.state == protocol::StreamState::hopeless)
            machine().find("QOR got a stream that is none");
        if (framed.state != protocol::StreamState::complete) return;
        const std::string record = unparsed_.substr(0, framed.length);
        unparsed_.erase(0, framed.length);
        take(record);
        known_ = known;
    }
}

void Qor::take(const std::string& record) {
    std::size_t consumed = 0;
    for (const auto& prototype : prototypes_) {
        const auto parsed = prototype->parse(record, consumed);
        if (!parsed) continue;
        auto& command = static_cast<ExternalCommand&>(*parsed);
        machine().note(command.header());
        if (!command.isReply()) handle(command);
        return;
    }
    machine().find("QOR got a record that it does not know");
}

bool Qor::chance(unsigned int percent) {
    const bool isSo = percent != 0 && machine().random().below(100) < percent;
    if (isSo) ++faults_;
    return isSo;
}

void Qor::handle(ExternalCommand& request) {
    ++requests_;
    noteTaken(request);
    if (chance(mood_.refused)) return refuse(request);
    if (chance(mood_.foreign)) sendForeign();
    if (handleQuestion(request)) return sendAnswer(request, true);
    handleOrder(request);
    if (line_) sendAnswer(request, false);
    if (const auto* connect = dynamic_cast<CommandKwpConnect*>(&request)) connectEcu(*connect);
    const auto* const shutdown = dynamic_cast<CommandShutdown*>(&request);
    if (shutdown != nullptr && (shutdown->flags & protocol::Shutdown::firstOption) != 0)
        machine().after(30, [this] { end(false); });
}

/// Makes the request its own answer, if it wants data.
bool Qor::handleQuestion(ExternalCommand& request) {
    if (auto* const info = dynamic_cast<CommandGetParamInfo*>(&request)) {
        describe(*info);
    } else if (auto* const read = dynamic_cast<CommandDirectCtrl*>(&request)) {
        if (read->operation != protocol::DirectCtrl::readValues) return false;
        readValues(*read);
    } else if (auto* const arrays = dynamic_cast<CommandStaticParam*>(&request)) {
        if (arrays->operation != protocol::StaticParam::readArrays) return false;
        readArrays(*arrays);
    } else if (auto* const group = dynamic_cast<CommandReadTogether*>(&request)) {
        readGroup(*group);
    } else if (auto* const codes = dynamic_cast<CommandGetDTC*>(&request)) {
        readCodes(*codes);
    } else if (auto* const kwp = dynamic_cast<CommandExecKwp*>(&request)) {
        kwp->data = "R" + kwp->data;
    } else if (auto* const can = dynamic_cast<CommandCanBusData*>(&request)) {
        for (auto& item : can->items) item.value = static_cast<std::int32_t>(item.canId ^ 0x5A5Au);
    } else {
        return false;
    }
    return true;
}

void Qor::handleOrder(ExternalCommand& request) {
    if (const auto* control = dynamic_cast<CommandDirectCtrl*>(&request)) {
        noteControl(*control);
    } else if (const auto* arrays = dynamic_cast<CommandStaticParam*>(&request)) {
        paramOf(arrays->paramIndex, "a write of arrays");
        if (!arrays->first.empty()) noteWrite(arrays->first.front());
    } else if (const auto* list = dynamic_cast<CommandSetParamList*>(&request)) {
        subscribed_ = list->paramIndices.items;
        for (const std::uint32_t index : subscribed_) paramOf(index, "a list");
        sleeps_ = false;
        machine().after(streamPeriodMs_, [this, series = ++series_] { streamOnce(series); });
    } else if (const auto* segment = dynamic_cast<CommandEcuSegment*>(&request)) {
        noteText(segment->segment);
    } else if (const auto* message = dynamic_cast<CommandCanBusSend*>(&request)) {
        noteText(message->data);
    } else if (const auto* bus = dynamic_cast<CommandCanBusConnect*>(&request)) {
        handled_.insert(bus->busParam);
    } else if (const auto* model = dynamic_cast<CommandStartEdit*>(&request)) {
        noteText(model->path);
        openModel();
    } else if (dynamic_cast<CommandRedirectUI*>(&request) != nullptr) {
        ++boxesAnswered_;
        boxEnd_ = machine().now() + boxSlackMs;
    }
}

void Qor::noteControl(const CommandDirectCtrl& order) {
    paramOf(order.paramIndex, "an order");
    if (!order.values.empty()) return noteWrite(order.values.front());
    if (order.operation == protocol::DirectCtrl::writeDynamic) return noteText(order.name);
}

void Qor::noteWrite(double value) {
    handled_.insert(static_cast<std::uint64_t>(value));
}

void Qor::noteText(const std::string& text) {
    handled_.insert(markOf(text));
}

unsigned int Qor::paramOf(std::uint32_t index, const char* what) {
    const std::uint32_t param = index - firstIndex_;
    if (param < paramNames.size()) return param;
    machine().find(std::string(what) + " names index " + std::to_string(index) +
                   ", but QOR's begin with " + std::to_string(firstIndex_));
    return 0;
}

void Qor::describe(CommandGetParamInfo& info) const {
    const auto known = std::find(paramNames.begin(), paramNames.end(), info.name);
    info.firstText = "first of " + info.name;
    info.secondText = "second of " + info.name;
    info.paramIndex = protocol::ParamInfo::unknownIndex;
    if (known == paramNames.end()) return;
    const auto param = static_cast<unsigned int>(known - paramNames.begin());
    info.paramIndex = indexOf(param);
    info.threeArrays = isMap(param);
}

void Qor::readValues(CommandDirectCtrl& request) {
    const unsigned int param = paramOf(request.paramIndex, "a read");
    const ValueOrigin origin{machine().now(), param, ValueOrigin::read};
    std::vector<double> values(3, origin.encode());
    if (param == textParam) {
        const std::string text = std::to_string(machine().now());
        values.assign(text.begin(), text.end());
    }
    request.values = std::move(values);
}

void Qor::readArrays(CommandStaticParam& request) {
    const unsigned int param = paramOf(request.paramIndex, "a read of arrays");
    const double value = ValueOrigin{machine().now(), param, ValueOrigin::array}.encode();
    request.first = request.second = request.third = {value, value};
}

void Qor::readGroup(CommandReadTogether& request) {
    request.values.clear();
    for (const std::uint32_t index : request.paramIndices) {
        const unsigned int param = paramOf(index, "a read of several");
        request.values.push_back(
            {ValueOrigin{machine().now(), param, ValueOrigin::group}.encode()});
    }
}

void Qor::readCodes(CommandGetDTC& request) const {
    request.dtcs.assign(2, {});
    for (auto& code : request.dtcs) {
        code.code = 0x1234;
        code.text1 = std::to_string(machine().now());
    }
}

void Qor::openModel() {
    firstIndex_ += indicesPerEpoch;
    subscribed_.clear();
    ++series_;
    ++connects_;
    isConnected_ = false;
}

void Qor::connectEcu(const CommandKwpConnect& request) {
    if (request.mode == protocol::KwpConnect::modeOnlineQuery)
        return sendState(ecuOnline, isEcuOnline() ? 1 : 0, 0);
    isConnected_ = false;
    ++connects_;
    if (request.protocol == 0) return;
    // What comes before the acknowledgement is lost, so well behind it.
    Ms delay = 120;
    for (int step = 1; step <= 3; ++step) sendState(progress, step, delay += 40);
    machine().after(delay + 60, [this, connect = connects_] {
        if (connect != connects_ || !line_) return;
        isConnected_ = isEcuThere_;
        sendState(result, isEcuThere_ ? succeeded : failed, 0);
    });
}

Topics Qor::topicsOf(const ExternalCommand& request) const {
    const auto about = [this](Topic::Kind kind, std::uint32_t index) {
        return Topic{kind, index - firstIndex_};
    };
    if (const auto* info = dynamic_cast<const CommandGetParamInfo*>(&request)) {
        const auto known = std::find(paramNames.begin(), paramNames.end(), info->name);
        return {{Topic::description, static_cast<unsigned int>(known - paramNames.begin())}};
    }
    if (const auto* read = dynamic_cast<const CommandDirectCtrl*>(&request)) {
        if (read->operation != protocol::DirectCtrl::readValues) return {};
        return {about(Topic::values, read->paramIndex)};
    }
    if (const auto* arrays = dynamic_cast<const CommandStaticParam*>(&request)) {
        if (arrays->operation != protocol::StaticParam::readArrays) return {};
        return {about(Topic::arrays, arrays->paramIndex)};
    }
    if (const auto* group = dynamic_cast<const CommandReadTogether*>(&request)) {
        Topics topics;
        for (const std::uint32_t index : group->paramIndices)
            topics.push_back(about(Topic::values, index));
        return topics;
    }
    if (dynamic_cast<const CommandGetDTC*>(&request) != nullptr) return {{Topic::codes}};
    if (dynamic_cast<const CommandExecKwp*>(&request) != nullptr) return {{Topic::kwp}};
    if (dynamic_cast<const CommandCanBusData*>(&request) != nullptr) return {{Topic::canValues}};
    return {};
}

void Qor::noteTaken(const ExternalCommand& request) {
    if (dynamic_cast<const CommandStartEdit*>(&request) != nullptr) ledger_.openModel();
    const Topics topics = topicsOf(request);
    ledger_.take(request.requestId(), topics, known_);
    if (machine().now() < boxEnd_) ledger_.doubt(topics);
}

void Qor::acknowledge(std::uint32_t requestId, Ms delay, std::uint32_t status) {
    CommandPing ping(protocol::Ping{status});
    ping.stampAsReplyTo(requestId);
    later(delay, bytesOf(ping));
}

void Qor::refuse(const ExternalCommand& request) {
    acknowledge(request.requestId(), 0, protocol::Ping::notHandled);
    if (line_) ledger_.refuse(request.requestId(), topicsOf(request), line_->sentToLibrary());
}

/// Bytes on the present connection, unless it is gone by then, or another model open.
void Qor::later(Ms delay, const std::string& bytes, const std::function<void()>& then) {
    if (!line_ || isHung_) return;
    const auto send = [then](Line& line, const std::string& all) {
        line.sendToLibrary(all);
        if (then) then();
    };
    if (delay == 0) return send(*line_, bytes);
    machine().after(delay,
                    [this, weak = std::weak_ptr<Line>(line_), first = firstIndex_, bytes, send] {
                        const auto line = weak.lock();
                        if (line && line == line_ && first == firstIndex_) send(*line, bytes);
                    });
}

void Qor::sendAnswer(ExternalCommand& data, bool hasData) {
    Random& random = machine().random();
    const std::uint32_t requestId = data.requestId();
    if (chance(mood_.cut)) {
        if (hasData) line_->sendToLibrary(bytesOf(data).substr(0, 1 + random.below(20)));
        return dropConnection(random.oneIn(2));
    }
    Ms acknowledgedAfter = random.below(3);
    Ms toldAfter = acknowledgedAfter + random.below(15);
    if (chance(mood_.late))
        (random.oneIn(2) ? acknowledgedAfter : toldAfter) += random.below(latestAnswerMs);
    toldAfter = std::max(toldAfter, acknowledgedAfter);
    if (hasData && chance(mood_.disordered)) std::swap(acknowledgedAfter, toldAfter);
    const bool isNamed = naming_ == Naming::named || (naming_ == Naming::mixed && random.oneIn(2));
    if (isNamed) data.stampAsReplyTo(requestId);
    const bool isSilent = chance(mood_.silent);
    const bool isTold = hasData && !isSilent;
    const bool isAcknowledged =
        (!isSilent || random.oneIn(2)) && !(isNamed && isTold && random.oneIn(2));
    const int copies = chance(mood_.twice) ? 2 : 1;
    for (int copy = 0; copy < copies; ++copy) {
        if (isAcknowledged) acknowledge(requestId, acknowledgedAfter, protocol::Ping::handled);
        if (isTold) sendData(data, isNamed, toldAfter, copy != 0);
    }
}

void Qor::sendData(const ExternalCommand& data, bool isNamed, Ms delay, bool isSecond) {
    std::uint64_t mark = 0;
    if (const auto* kwp = dynamic_cast<const CommandExecKwp*>(&data))
        mark = markOf(kwp->data.substr(1));
    else if (const auto* can = dynamic_cast<const CommandCanBusData*>(&data))
        mark = can->items.empty() ? 0 : can->items.front().canId;
    const auto named = isNamed ? std::optional<std::uint32_t>(data.requestId()) : std::nullopt;
    later(delay, bytesOf(data),
          [this, named, isSecond, mark, topics = topicsOf(data), made = machine().now()] {
              ledger_.tell(named, topics, line_->sentToLibrary());
              if (isSecond && !named) ledger_.tellAgain(topics, made, mark);
          });
}

void Qor::sendForeign() {
    Random& random = machine().random();
    acknowledge(static_cast<std::uint32_t>(random.next()), 0, protocol::Ping::handled);
    CommandDirectCtrl values;
    values.paramIndex = firstIndex_ + 50 + random.below(40);
    values.operation = protocol::DirectCtrl::readValues;
    values.values = {-1};
    if (random.oneIn(2)) values.stampAsReplyTo(static_cast<std::uint32_t>(random.next()));
    later(random.below(3), bytesOf(values));
    CommandGetParamInfo info;
    info.name = "Foreigner";
    info.paramIndex = 7;
    if (random.oneIn(2)) info.stampAsReplyTo(static_cast<std::uint32_t>(random.next()));
    later(random.below(3), bytesOf(info));
}

void Qor::sendState(std::int32_t index, double value, Ms delay) {
    later(delay, bytesOf(CommandReceiveParamData(protocol::ReceiveParamData{index, value})));
}

void Qor::sendValue(unsigned int index, ValueOrigin origin) {
    sendState(static_cast<std::int32_t>(index), origin.encode(), 0);
}

// While nothing is under way nobody looks, so it need not go on.
void Qor::streamOnce(std::uint64_t series) {
    if (series != series_ || subscribed_.empty() || !line_) return;
    if (isConnected_ && isEcuThere_)
        for (const std::uint32_t index : subscribed_)
            sendValue(index, {machine().now(), index - firstIndex_, ValueOrigin::streamed});
    sleeps_ = !machine().isUsed();
    if (!sleeps_) machine().after(streamPeriodMs_, [this, series] { streamOnce(series); });
}

void Qor::wake() {
    if (!sleeps_) return;
    sleeps_ = false;
    machine().after(streamPeriodMs_, [this, series = series_] { streamOnce(series); });
}

void Qor::showBox() {
    if (!line_ || isHung_) return;
    ++boxesShown_;
    ++faults_;
    boxEnd_ = machine().now() + longestBoxMs + boxSlackMs;
    later(0,
          bytesOf(CommandRedirectUI(protocol::RedirectUI{"QOR", "Is the key in its lock?", 4, 0})));
}

}  // namespace simtime
