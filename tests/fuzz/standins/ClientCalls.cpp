#include "ClientCalls.h"

#include "Turns.h"

// The sanitizer's; elsewhere there is none.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace fuzz {
namespace {

/// All operations together that one call is made of: the longest are those with QOR's 90 s for a
/// model and, for the end of a connect, 10 s and 15 s.
constexpr std::uint64_t longestMs = 100000;
constexpr unsigned int timeoutMs = 300;
const char* const names[] = {"a", "b", "", "Map"};

class NoStarter final : public IProcessStarter {
public:
    bool start(const std::string&, const std::string&) override { return true; }
    void awaitIdle(unsigned int) override {}
};

class FirstButton final : public IMessageBox {
public:
    unsigned int show(const std::string&, const std::string&, unsigned int) override { return 1; }
};

/// Cancels after a while, for a connect has no end of its own.
class Monitor final : public IProgressMonitor, public ClientExternalOperating::ConnectCallback {
public:
    void reserved1() override {}
    void reserved2() override {}
    void reserved3() override {}
    void reserved4() override {}
    void reserved5() override {}
    void reserved6() override {}
    bool isCancelled() override { return ++looks_ > 20; }
    void reserved8() override {}
    void reserved9() override {}
    void reportError(const std::string& message, unsigned int) override {
        FUZZ_REQUIRE(!message.empty());
    }
    void onProgress() override {}
    void onFigure(std::int32_t, std::uint32_t) override {}

private:
    int looks_ = 0;
};

std::string nameBy(Input& input) {
    return names[input.below(4)];
}

void callDiagnostics(ClientExternalOperating& client, Input& input, std::uint32_t which) {
    std::vector<protocol::DtcRecord> dtcs;
    std::vector<protocol::CanBusItem> frames;
    protocol::ExecKwp answer;
    Monitor monitor;
    switch (which) {
        case 0:
            client.getDtc(1, dtcs, timeoutMs);
            break;
        case 1:
            client.getCanBusData({{1, 2}}, frames, timeoutMs);
            break;
        case 2:
            client.execKwp(protocol::ExecKwp(), answer);
            break;
        case 3:
            client.connectEcu(protocol::KwpConnect(), input.below(2) == 0 ? nullptr : &monitor,
                              monitor);
            break;
        case 4:
            client.isEcuOnline();
            break;
        case 5:
            client.disconnectEcu();
            break;
        case 6:
            client.setEcuSegment("segment", true);
            break;
        case 7:
            client.startEdit(protocol::StartEdit());
            break;
        case 8:
            client.clearDtc();
            break;
        default:
            client.ping(timeoutMs);
    }
}

void callParams(ClientExternalOperating& client, Input& input, std::uint32_t which) {
    protocol::ParamInfo description;
    SampledValue sample;
    common::Doubles values;
    std::vector<std::vector<double>> several;
    std::vector<ArrivalCursor> cursors;
    const std::string name = nameBy(input);
    switch (which) {
        case 0:
            client.getParamInfo(name, description, timeoutMs, input.below(2) == 0);
            break;
        case 1:
            client.getParamData(name, values, timeoutMs, input.below(2) == 0);
            break;
        case 2:
            client.getStaticParam(name, sample, timeoutMs);
            break;
        case 3:
            if (client.readTogether({name, nameBy(input)}, several, timeoutMs))
                FUZZ_REQUIRE(several.size() == 2);
            break;
        case 4:
            if (client.subscribe(client.epoch(), {name}, &cursors)) {
                FUZZ_REQUIRE(cursors.size() == 1);
                client.collectArrivals(client.epoch(), cursors);
                if (input.below(2) == 0) client.unsubscribe(client.epoch(), {name});
            }
            break;
        case 5:
            client.peekParamData(name, sample);
            break;
        case 6:
            client.setParamData(name, {1, 2});
            break;
        default:
            client.setStaticParam(name, SampledValue());
    }
}

}  // namespace

std::unique_ptr<ClientExternalOperating> makeClient(
    const ClientExternalOperating::MakeTransport& makeTransport) {
    return std::make_unique<ClientExternalOperating>(ClientSettings(), makeTransport,
                                                     std::make_unique<NoStarter>(),
                                                     std::make_unique<FirstButton>());
}

void callClient(ClientExternalOperating& client, Input& input) {
    const std::uint64_t startMs = turns::nowMs();
    client.beginRequest(nullptr);
    const std::uint32_t which = input.below(18);
    if (which < 8)
        callParams(client, input, which);
    else
        callDiagnostics(client, input, which - 8);
    client.endRequest();
    FUZZ_REQUIRE(turns::nowMs() - startMs < longestMs);
}

std::size_t heapBytes() {
    return __sanitizer_get_current_allocated_bytes != nullptr
               ? __sanitizer_get_current_allocated_bytes()
               : 0;
}

}  // namespace fuzz
