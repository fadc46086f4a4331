#include "ScriptedQor.h"

#include <utility>

#include "protocol/Commands.h"
#include "protocol/RecordHead.h"
#include "protocol/RecordStream.h"
#include "Turns.h"

namespace fuzz {
namespace {

constexpr std::uint32_t turnMs = 1;

std::string recordOf(std::uint32_t header, std::uint32_t requestId, std::string_view payload) {
    std::string record;
    wire::Writer writer(record);
    writer.put(header);
    writer.put(requestId);
    writer.put(static_cast<std::uint32_t>(payload.size()));
    record += payload;
    return record;
}

/// The request with what `fill` adds, as its own answer; empty if it is of another class.
template <class Command, class Fill>
std::string answerIf(const std::string& request, Fill fill) {
    std::size_t consumed = 0;
    const auto parsed = Command().parse(request, consumed);
    if (!parsed) return {};
    auto& command = dynamic_cast<Command&>(*parsed);
    fill(command);
    command.stampAsReplyTo(command.requestId());
    std::string answer;
    command.write(answer);
    return answer;
}

}  // namespace

std::string goodAnswerTo(const std::string& request) {
    std::string answer = answerIf<CommandGetParamInfo>(request, [](auto& info) {
        info.paramIndex = static_cast<std::int32_t>(info.name.size());
        info.threeArrays = info.name.size() > 1;
    });
    if (answer.empty())
        answer = answerIf<CommandDirectCtrl>(request, [](auto& read) { read.values = {1, 2}; });
    if (answer.empty())
        answer = answerIf<CommandStaticParam>(
            request, [](auto& read) { read.first = read.second = read.third = {3}; });
    if (answer.empty())
        answer = answerIf<CommandReadTogether>(
            request, [](auto& read) { read.values.assign(read.paramIndices.size(), {4}); });
    if (answer.empty())
        answer = answerIf<CommandGetDTC>(request, [](auto& read) {
            read.dtcs.assign(2, {1, 2, "a", "b", "c", "d"});
        });
    if (answer.empty()) answer = answerIf<CommandExecKwp>(request, [](auto&) {});
    if (answer.empty()) answer = answerIf<CommandCanBusData>(request, [](auto&) {});
    return answer;
}

std::string recordFrom(Input& input, std::uint32_t lastRequestId) {
    const std::uint32_t id = input.below(21);
    const std::uint32_t kind = input.byte();
    const std::uint32_t header = id | ((kind & 1) != 0 ? ExternalCommand::replyFlag : 0);
    const std::uint32_t requestId = (kind & 2) != 0 ? lastRequestId : 0xABCD0000u + id;
    const std::size_t length = (kind & 4) != 0 ? input.byte() : input.below(32);
    return recordOf(header, requestId, input.take(length));
}

ScriptedQor::ScriptedQor(std::string name, Input& input) : name_(std::move(name)), input_(input) {
    links::listen(name_);
    turns::spawn([this] { run(); });
}

ScriptedQor::~ScriptedQor() {
    end();
    if (!hasEnded_) fibers::Scheduler::present().wait(1000, &hasEnded_);
    FUZZ_REQUIRE(hasEnded_);
    links::stopListening(name_);
}

void ScriptedQor::end() {
    isEnding_ = true;
}

void ScriptedQor::run() {
    while (!isEnding_) {
        if (!link_) link_ = links::accept(name_);
        if (link_) {
            takeRequests();
            if (!input_.isEmpty()) act();
        }
        if (link_ && link_->toQor.isClosed()) link_ = nullptr;
        turns::pause(turnMs);
    }
    if (link_) link_->toLibrary.close();
    link_ = nullptr;
    hasEnded_ = true;
    fibers::Scheduler::present().signal(&hasEnded_, true);
}

void ScriptedQor::takeRequests() {
    unparsed_ += link_->toQor.takeAll();
    for (;;) {
        const auto framed = protocol::recordAt(unparsed_, 0);
        // What the library itself sends is never but a row of records.
        FUZZ_REQUIRE(framed.state != protocol::StreamState::hopeless);
        if (framed.state != protocol::StreamState::complete) return;
        const auto head = protocol::RecordHead::read(unparsed_, 0);
        if ((head.header & ExternalCommand::replyFlag) == 0)
            lastRequest_ = unparsed_.substr(0, framed.length);
        unparsed_.erase(0, framed.length);
    }
}

void ScriptedQor::act() {
    const std::uint32_t step = input_.byte();
    switch (step & 7) {
        case 0:
        case 1:
            sendAnswer();
            break;
        case 2:
            sendAcknowledgement(1);
            break;
        case 3:
            sendAcknowledgement(input_.below(4));
            break;
        case 4:
        case 5:
            sendOwnRecord();
            break;
        case 6:
            send(input_.take(input_.byte()));
            break;
        default:
            if ((step >> 3 & 3) == 3) link_->toLibrary.close();
    }
    // The rest waits for the next turn, or comes in the same piece.
    if (step >= 0x80 && !input_.isEmpty() && !link_->toLibrary.isClosed()) act();
}

void ScriptedQor::sendAnswer() {
    if (lastRequest_.empty()) return;
    const std::string answer = goodAnswerTo(lastRequest_);
    answer.empty() ? sendAcknowledgement(1) : send(answer);
}

void ScriptedQor::sendAcknowledgement(std::uint32_t status) {
    if (lastRequest_.empty()) return;
    std::string payload;
    wire::Writer(payload).put(status);
    const auto head = protocol::RecordHead::read(lastRequest_, 0);
    send(recordOf(ExternalCommand::replyFlag, head.requestId, payload));
}

void ScriptedQor::sendOwnRecord() {
    const std::uint32_t last =
        lastRequest_.empty() ? 0 : protocol::RecordHead::read(lastRequest_, 0).requestId;
    send(recordFrom(input_, last));
}

void ScriptedQor::send(std::string_view bytes) {
    link_->toLibrary.append(std::string(bytes));
}

}  // namespace fuzz
