// Messages to the library's window, with the real client behind it: whatever tag, length and bytes
// they have, also while the client waits for its own message to QOR.
#include "client/ParamTables.h"
#include "ClientCalls.h"
#include "Messages.h"
#include "protocol/RecordHead.h"
#include "ScriptedQor.h"
#include "Target.h"
#include "transport/ExternalCommandFactory.h"
#include "Turns.h"

namespace {

constexpr std::size_t otherBytes = 8u << 20;
constexpr int deepest = 3;

class Script {
public:
    explicit Script(fuzz::Input& input) : input_(input) {}

    /// Something for the window, unless messages lie too many one in the other.
    void deliver() {
        if (depth_ >= deepest || input_.isEmpty()) return;
        ++depth_;
        const std::uint32_t kind = input_.byte();
        if (kind >= 0x80) return deliverOdd(kind);
        std::string record = (kind & 1) != 0 && !lastRequest_.empty()
                                 ? fuzz::goodAnswerTo(lastRequest_)
                                 : fuzz::recordFrom(input_, lastRequestId());
        if ((kind & 2) != 0) record.resize(record.size() - std::min<std::size_t>(record.size(), 5));
        send(ExternalCommandFactory::messageTag, record.data(), record.size());
        --depth_;
    }

    void noteRequest(const std::string& request) { lastRequest_ = request; }
    std::uint32_t below(std::uint32_t bound) { return input_.below(bound); }

private:
    /// Another program's, or a mistake.
    void deliverOdd(std::uint32_t kind) {
        const std::string bytes(input_.take(kind & 31));
        const auto tag = (kind & 32) != 0 ? ExternalCommandFactory::messageTag : input_.word();
        if ((kind & 64) != 0)
            send(tag, nullptr, input_.word());
        else
            send(tag, bytes.data(), bytes.size());
        --depth_;
    }

    static void send(unsigned long tag, const char* bytes, std::size_t count) {
        // In memory of its own size, so that a byte too many is seen.
        const std::unique_ptr<char[]> copy(bytes == nullptr ? nullptr : new char[count]);
        if (copy) std::copy_n(bytes, count, copy.get());
        COPYDATASTRUCT record = {tag, static_cast<DWORD>(count), copy.get()};
        SetLastError(1234);
        const LRESULT result = messages::deliver(&record);
        FUZZ_REQUIRE(GetLastError() == 1234);  // that of a send that may be waiting
        const bool isOurs = tag == ExternalCommandFactory::messageTag && bytes != nullptr;
        FUZZ_REQUIRE(isOurs || result == 0);
    }

    std::uint32_t lastRequestId() const {
        return lastRequest_.empty() ? 0 : protocol::RecordHead::read(lastRequest_, 0).requestId;
    }

    fuzz::Input& input_;
    std::string lastRequest_;
    int depth_ = 0;
};

/// QOR's window, for whose messages the script says how they end.
class Platform final : public IWindowPlatform {
public:
    explicit Platform(Script& script) : script_(script) {}

    HWND findWindow(const std::string&) override {
        if (script_.below(32) == 1) ++process_;
        return script_.below(32) == 1 ? nullptr : this;
    }
    unsigned long processOf(HWND) override { return process_; }
    MessageEnd sendCopyData(HWND, unsigned long tag, const std::string& bytes, unsigned int,
                            unsigned int timeoutMs, unsigned long& result) override {
        FUZZ_REQUIRE(tag == ExternalCommandFactory::messageTag);
        script_.noteRequest(bytes);
        const std::uint32_t end = script_.below(16);
        if ((end & 1) == 0) script_.deliver();
        result = end == 15 ? 2 : end != 13;
        if (end < 12 || end == 13) return MessageEnd::handled;
        turns::pause(std::min(timeoutMs, 5000u));
        const MessageEnd ends[] = {MessageEnd::late, MessageEnd::gone, MessageEnd::forbidden};
        return end == 12 ? MessageEnd::hung : ends[end % 3];
    }
    bool holdsSender() override { return script_.below(2) == 0; }
    void releaseSender(long result) override { FUZZ_REQUIRE(result == 1); }

private:
    Script& script_;
    unsigned long process_ = 1;
};

void play(std::string_view bytes) {
    fuzz::Input input(bytes);
    Script script(input);
    const std::size_t heapBefore = fuzz::heapBytes();
    const auto client = fuzz::makeClient([&](ICommandReceiver& receiver) {
        return std::make_unique<ExternalCommandFactory>("ours", "qor", receiver,
                                                        std::make_unique<Platform>(script));
    });
    messages::onPump = [&] { script.deliver(); };
    for (int calls = 0; calls < 40 && !input.isEmpty(); ++calls) fuzz::callClient(*client, input);
    messages::onPump = nullptr;
    messages::deliver(nullptr);
    FUZZ_REQUIRE(fuzz::heapBytes() <= heapBefore + ParamTables::maxBytes + otherBytes);
}

void tryOne(std::string_view bytes) {
    turns::execute([bytes] { play(bytes); });
}

const fuzz::Registered registered({"window", tryOne});

}  // namespace
