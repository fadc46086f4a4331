#include "QorPeer.h"

#include <functional>

#include "common/Clock.h"
#include "LinkEnd.h"
#include "protocol/RecordStream.h"

namespace {

constexpr std::int32_t ecuOnline = -10;
constexpr std::int32_t progress = -11;
constexpr std::int32_t result = -12;
constexpr double succeeded = -1;
constexpr int roundsBetweenQuestions = 50;
constexpr int roundsBetweenResults = 5;

template <class... Commands>
std::vector<std::unique_ptr<ExternalCommand>> make() {
    std::vector<std::unique_ptr<ExternalCommand>> commands;
    (commands.push_back(std::make_unique<Commands>()), ...);
    return commands;
}

/// Names of three arrays begin with "Map".
bool hasThreeArrays(const std::string& name) {
    return name.compare(0, 3, "Map") == 0;
}

std::int32_t indexOf(const std::string& name) {
    return static_cast<std::int32_t>(std::hash<std::string>()(name) % 1000);
}

}  // namespace

QorPeer::QorPeer(std::string name) : QorPeer(std::make_unique<LinkEnd>(std::move(name))) {}

QorPeer::QorPeer(std::unique_ptr<QorEnd> end)
    : end_(std::move(end)),
      prototypes_(make<CommandPing, CommandStartEdit, CommandKwpConnect, CommandGetParamInfo,
                       CommandShutdown, CommandSetParamList, CommandDirectCtrl,
                       CommandEcuToolRoutine, CommandGetDTC, CommandRedirectUI, CommandStaticParam,
                       CommandEcuSegment, CommandExecKwp, CommandCanBusConnect, CommandCanBusData,
                       CommandReadTogether, CommandCanBusSend>()) {
    thread_ = std::thread([this] { run(); });
}

QorPeer::~QorPeer() {
    ending_ = true;
    thread_.join();
}

void QorPeer::run() {
    while (!ending_) {
        if (!connected_ && end_->accept()) {
            ++connections_;
            connected_ = true;
        }
        if (connected_) talk();
        common::sleepMs(1);
    }
    if (connected_) end_->hangUp();
}

void QorPeer::talk() {
    takeRecords();
    stream();
    if (hangUp_.exchange(false)) end_->hangUp();
    if (end_->isOpen()) return;
    connected_ = false;
    unparsed_.clear();
    subscribed_.clear();
    connecting_ = false;
}

void QorPeer::takeRecords() {
    unparsed_ += end_->receive();
    for (;;) {
        const auto framed = protocol::recordAt(unparsed_, 0);
        if (framed.state != protocol::StreamState::complete) return;
        take(unparsed_.substr(0, framed.length));
        unparsed_.erase(0, framed.length);
    }
}

void QorPeer::take(const std::string& record) {
    std::size_t consumed = 0;
    for (const auto& prototype : prototypes_) {
        const auto parsed = prototype->parse(record, consumed);
        if (!parsed) continue;
        auto& command = dynamic_cast<ExternalCommand&>(*parsed);
        if (!command.isReply()) answer(command);
        return;
    }
}

/// Turns a request of this class into its own answer and sends it.
template <class Command, class Fill>
bool QorPeer::answerIf(ExternalCommand& request, Fill fill) {
    auto* const command = dynamic_cast<Command*>(&request);
    if (command == nullptr || !fill(*command)) return false;
    reply(*command, command->requestId());
    return true;
}

void QorPeer::answer(ExternalCommand& request) {
    const double number = ++number_;
    const bool answered =
        answerIf<CommandGetParamInfo>(request,
                                      [](auto& info) {
                                          info.paramIndex = indexOf(info.name);
                                          info.threeArrays = hasThreeArrays(info.name);
                                          return true;
                                      }) ||
        answerIf<CommandDirectCtrl>(request,
                                    [&](auto& values) {
                                        values.values = {number, number, number};
                                        return values.operation == protocol::DirectCtrl::readValues;
                                    }) ||
        answerIf<CommandStaticParam>(request,
                                     [&](auto& arrays) {
                                         arrays.first = arrays.second = arrays.third = {number};
                                         return arrays.operation ==
                                                protocol::StaticParam::readArrays;
                                     }) ||
        answerIf<CommandReadTogether>(request,
                                      [&](auto& group) {
                                          group.values.assign(group.paramIndices.size(), {number});
                                          return true;
                                      }) ||
        answerIf<CommandGetDTC>(request,
                                [](auto& codes) {
                                    codes.dtcs.assign(3, {0x1234, 1, "a", "b", "c", "d"});
                                    return true;
                                }) ||
        answerIf<CommandExecKwp>(request, [](auto&) { return true; }) ||
        answerIf<CommandCanBusData>(request, [](auto&) { return true; });
    if (answered) return;
    CommandPing acknowledgement(protocol::Ping{protocol::Ping::handled});
    reply(acknowledgement, request.requestId());
    if (const auto* connect = dynamic_cast<CommandKwpConnect*>(&request)) connectEcu(*connect);
    if (const auto* list = dynamic_cast<CommandSetParamList*>(&request))
        subscribed_ = list->paramIndices.items;
    if (dynamic_cast<CommandRedirectUI*>(&request) != nullptr) ++questionsAnswered_;
}

void QorPeer::connectEcu(const CommandKwpConnect& request) {
    connecting_ = connecting_ || request.mode != protocol::KwpConnect::modeOnlineQuery;
    sendValue(ecuOnline, 1);
}

void QorPeer::stream() {
    for (const std::uint32_t index : subscribed_)
        sendValue(static_cast<std::int32_t>(index), ++number_);
    ++rounds_;
    // Again and again: the library drops a result that arrives before it has seen the acceptance.
    if (connecting_ && !holdsResults_ && rounds_ % roundsBetweenResults == 0) {
        sendValue(progress, rounds_);
        sendValue(result, succeeded);
    }
    if (rounds_ % roundsBetweenQuestions == 0)
        send(CommandRedirectUI(protocol::RedirectUI{"QOR", "Is the key in its lock?", 4, 0}));
}

void QorPeer::sendValue(std::int32_t index, double value) {
    send(CommandReceiveParamData(protocol::ReceiveParamData{index, value}));
}

void QorPeer::reply(ExternalCommand& answer, std::uint32_t requestId) {
    answer.stampAsReplyTo(requestId);
    send(answer);
}

void QorPeer::send(const IExternalCommand& command) {
    std::string bytes;
    command.write(bytes);
    end_->send(bytes);
}
