#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "client/ClientExternalOperating.h"
#include "protocol/Commands.h"

/// QOR at the other end of a transport without wires: keeps what the client sends, acknowledges
/// it or not, and hands its own commands to the client as bytes, as a transport does. For tests of
/// a single thread.
class FakeQor {
public:
    /// One command of the client's, as it was given to the transport.
    struct Sent {
        std::unique_ptr<IExternalCommand> command;
        unsigned int timeoutMs;
        std::uint32_t tick;
    };

    FakeQor();
    FakeQor(const FakeQor&) = delete;
    FakeQor& operator=(const FakeQor&) = delete;

    /// For the client's constructor.
    ClientExternalOperating::MakeTransport transport();

    /// Whether commands without a reaction of their own are acknowledged.
    bool acknowledges = true;

    /// What happens when the client sends a `Command`; the result is that of the send.
    template <class Command>
    void on(std::function<bool(const Command&)> reaction) {
        reactions_[Command::id] = [reaction](const IExternalCommand& command) {
            return reaction(dynamic_cast<const Command&>(command));
        };
    }

    /// How a send has ended that does not succeed; null: by its time, or for want of a permit. With
    /// one that says that nothing leaves nothing does.
    std::optional<Delivery> failure;
    bool isConnected = true;

    /// What happens while a command waits for its turn to leave.
    std::function<void(const IExternalCommand&)> beforeLeaving = [](const auto&) {};

    /// What happens where a transport waits between two looks for data; without it nothing does.
    std::function<void(common::Event& handled, unsigned int timeoutMs)> whileAwaited;

    /// QOR answers questions for this parameter at once, under its own name.
    void knows(const protocol::ParamInfo& description);
    void knows(const std::string& name, std::int32_t index, bool threeArrays = false);
    void forgets(const std::string& name) { descriptions_.erase(name); }

    /// QOR's own command to the client; the result is that of its handler, false if no prototype
    /// takes it.
    bool send(const IExternalCommand& command);
    bool sendRecord(const std::string& record);
    /// The same as the answer to that request, which it names.
    bool answer(const ExternalCommand& request, ExternalCommand&& command) {
        command.stampAsReplyTo(request.requestId());
        return send(command);
    }
    bool sendValue(std::int32_t index, double value);
    /// The same without a record, for tests with very many values: no bytes, no request ids.
    void handOverValue(std::int32_t index, double value) {
        dynamic_cast<ClientExternalOperating&>(*client_).onParamValue(index, value);
    }

    /// From now on this is another QOR.
    void newQor() { client_->onNewQor(); }

    /// A refusal that comes when the send has ended.
    void refuseLate(const ExternalCommand& command) { client_->onRefused(command.requestId()); }

    const std::vector<Sent>& sent() const { return sent_; }
    void forgetSent() { sent_.clear(); }

    /// The ids of what was sent, in order.
    std::vector<int> sentIds() const;

    /// All sent commands of one class, in order.
    template <class Command>
    std::vector<const Command*> all() const {
        std::vector<const Command*> found;
        for (const Sent& each : sent_)
            if (const auto* command = dynamic_cast<const Command*>(each.command.get()))
                found.push_back(command);
        return found;
    }

    /// The last sent command of one class; throws if there is none.
    template <class Command>
    const Command& last() const {
        return *all<Command>().at(all<Command>().size() - 1);
    }

    /// What was done in which order: "reply", "send ID"; others may add theirs.
    std::vector<std::string> events;
    bool isTransportAlive = false;

private:
    class Transport;
    class Replyer;

    bool take(std::unique_ptr<IExternalCommand> command, unsigned int timeoutMs);

    ICommandReceiver* client_ = nullptr;
    std::map<std::uint16_t, std::function<bool(const IExternalCommand&)>> reactions_;
    std::map<std::string, protocol::ParamInfo> descriptions_;
    std::vector<Sent> sent_;
};
