#include "agent/Answering.h"
#include "agent/ConnectRecord.h"
#include "agent/QorProtocolAgent.h"
#include "common/Clock.h"

bool QorProtocolAgent::performConnect(const Impl::ProtocolCmd& command) {
    /// Keeps the ECU looking online while a slow connect makes progress: 15 s ahead, so 17 s with
    /// the span that the facade adds. It takes no lock: the time is an atomic.
    class MyCallback final : public ClientExternalOperating::ConnectCallback {
    public:
        explicit MyCallback(Impl& impl) : impl_(impl) {}
        void onProgress() override { impl_.lastQorContactTick = common::now() + 15000; }

    private:
        Impl& impl_;
    };

    const auto* request = payloadOf<Impl::CmdDataConnect>(command);
    if (request == nullptr) return false;
    {
        const common::LockGuard guard(impl_->stateLock);
        impl_->readPeriodMs = request->settings.refreshPeriodMs;
    }
    MyCallback callback(*impl_);
    const protocol::KwpConnect record = makeConnectRecord(request->settings, request->type);
    return client_->connectEcu(record, command.monitor, callback) && answer(command);
}

bool QorProtocolAgent::ping(const Impl::ProtocolCmd& command) {
    const auto* request = payloadOf<Impl::CmdDataPing>(command);
    return request != nullptr && client_->ping(request->timeoutMs) && answer(command);
}
