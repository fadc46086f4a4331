#include "support/FakeQor.h"

#include <utility>

#include "common/Clock.h"
#include "transport/ReceivedCommand.h"

class FakeQor::Transport final : public IExternalCommandFactory {
public:
    explicit Transport(FakeQor& qor) : qor_(qor) { qor_.isTransportAlive = true; }
    ~Transport() override {
        qor_.isTransportAlive = false;
        qor_.events.emplace_back("transport ends");
    }

    bool send(std::unique_ptr<IExternalCommand> command, unsigned int timeoutMs) override {
        return qor_.take(std::move(command), timeoutMs);
    }
    Delivery sendIf(Permit permit, std::unique_ptr<IExternalCommand> command,
                    unsigned int timeoutMs) override {
        qor_.beforeLeaving(*command);
        if (qor_.failure == Delivery::noConnection || qor_.failure == Delivery::notBegun)
            permit = [] { return false; };
        const Delivery sent =
            IExternalCommandFactory::sendIf(std::move(permit), std::move(command), timeoutMs);
        return sent == Delivery::taken ? sent : qor_.failure.value_or(sent);
    }
    bool isConnected() const override { return qor_.isConnected; }
    void awaitInput(common::Event& handled, unsigned int timeoutMs) override {
        if (qor_.whileAwaited) qor_.whileAwaited(handled, timeoutMs);
    }
    unsigned int defaultTimeout(unsigned int) const override { return 2000; }

private:
    FakeQor& qor_;
};

class FakeQor::Replyer final : public IExternalCommand::ICommandReplyer {
public:
    explicit Replyer(FakeQor& qor) : qor_(qor) {}
    bool reply(std::unique_ptr<IExternalCommand> answer, unsigned int timeoutMs) override {
        qor_.events.push_back((answer ? "reply with a command " : "reply empty ") +
                              std::to_string(timeoutMs));
        return true;
    }

private:
    FakeQor& qor_;
};

FakeQor::FakeQor() {
    on<CommandGetParamInfo>([this](const CommandGetParamInfo& question) {
        const auto found = descriptions_.find(question.name);
        if (found != descriptions_.end()) send(CommandGetParamInfo(found->second));
        return acknowledges;
    });
}

ClientExternalOperating::MakeTransport FakeQor::transport() {
    return [this](ICommandReceiver& client) {
        client_ = &client;
        return std::make_unique<Transport>(*this);
    };
}

void FakeQor::knows(const protocol::ParamInfo& description) {
    descriptions_[description.name] = description;
}

void FakeQor::knows(const std::string& name, std::int32_t index, bool threeArrays) {
    protocol::ParamInfo description;
    description.name = name;
    description.paramIndex = index;
    description.threeArrays = threeArrays;
    knows(description);
}

bool FakeQor::send(const IExternalCommand& command) {
    std::string record;
    command.write(record);
    return sendRecord(record);
}

bool FakeQor::sendRecord(const std::string& record) {
    const ReceivedCommand received = recognise(record, client_->prototypes(), CommandPing());
    if (!received.command) {
        tellUnreadable(received, record, *client_);
        return false;
    }
    Replyer replyer(*this);
    return client_->handleCommand(*received.command, replyer);
}

bool FakeQor::sendValue(std::int32_t index, double value) {
    CommandReceiveParamData command;
    command.paramIndex = index;
    command.value = value;
    return send(command);
}

std::vector<int> FakeQor::sentIds() const {
    std::vector<int> ids;
    for (const Sent& each : sent_) ids.push_back(each.command->getId());
    return ids;
}

bool FakeQor::take(std::unique_ptr<IExternalCommand> command, unsigned int timeoutMs) {
    const IExternalCommand& taken = *command;
    sent_.push_back({std::move(command), timeoutMs, common::tickCount()});
    events.push_back("send " + std::to_string(taken.getId()));
    const auto reaction = reactions_.find(taken.getId());
    return reaction != reactions_.end() ? reaction->second(taken) : acknowledges;
}
