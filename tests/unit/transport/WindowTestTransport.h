#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "transport/ExternalCommandFactory.h"

/// A window title that no other program of the desktop bears.
inline std::string uniqueTitle(const std::string& what) {
    static int count = 0;
    return "QorWindowTest " + what + " " + std::to_string(GetCurrentProcessId()) + " " +
           std::to_string(++count);
}

/// A prototype that counts the records it was offered.
template <class Base>
class CountingPrototype final : public Base, public IClientCommand {
public:
    explicit CountingPrototype(unsigned& offers) : offers_(&offers) {}
    CountingPrototype() = default;

    std::unique_ptr<IExternalCommand> parse(const std::string& in,
                                            std::size_t& consumed) const override {
        if (offers_ != nullptr) ++*offers_;
        return Base::parse(in, consumed);
    }
    IExternalCommand* createFromPayload(std::string_view bytes) const override {
        return Base::template createAs<CountingPrototype>(bytes);
    }
    bool onReply(IExternalCommand::ICommandReplyer*, ClientExternalOperating*) override {
        return true;
    }

private:
    unsigned* offers_ = nullptr;  // the test's own
};

/// Writes down what a transport hands over and then does what the test says. It knows the commands
/// 6 (a value), 8 (a tool routine) and 10 (a message box).
class WindowTestReceiver : public ICommandReceiver {
public:
    using Replyer = IExternalCommand::ICommandReplyer;
    struct Seen {
        unsigned commandId;
        std::uint32_t requestId;
        bool isReply;
    };

    WindowTestReceiver() {
        registry.push_back(std::make_unique<CountingPrototype<CommandReceiveParamData>>(offers));
        registry.push_back(std::make_unique<CountingPrototype<CommandEcuToolRoutine>>());
        registry.push_back(std::make_unique<CountingPrototype<CommandRedirectUI>>());
    }

    const Prototypes& prototypes() const override { return registry; }

    bool handleCommand(IExternalCommand& command, Replyer& replyer) override {
        const auto& received = static_cast<const ExternalCommand&>(command);
        seen.push_back({received.getId(), received.requestId(), received.isReply()});
        return handler(command, replyer);
    }

    void onNewQor() override { ++newQors; }
    void onUnreadable(const UnreadRecord& record) override { unread.push_back(record); }

    Prototypes registry;
    unsigned offers = 0;  ///< records offered to the first prototype
    std::vector<Seen> seen;
    int newQors = 0;
    std::vector<UnreadRecord> unread;
    std::function<bool(IExternalCommand&, Replyer&)> handler = [](auto&, auto&) { return true; };
};

/// A transport with its receiver.
class WindowTestTransport final : public WindowTestReceiver, public ExternalCommandFactory {
public:
    WindowTestTransport(const std::string& title, const std::string& serverTitle,
                        std::unique_ptr<IWindowPlatform> platform)
        : ExternalCommandFactory(title, serverTitle, *this, std::move(platform)) {}

    bool sendRoutine(unsigned int timeoutMs) {
        return send(std::make_unique<CommandEcuToolRoutine>(), timeoutMs);
    }
};
