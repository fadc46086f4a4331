#include "agent/ConnectRecord.h"
#include "agent/QorProtocolAgent.h"
#include "common/Clock.h"

bool QorProtocolAgent::performConnect(const Request<channel::CmdDataConnect>& request) {
    /// Keeps the ECU looking online while a slow connect makes progress: 15 s ahead, so 17 s with
    /// the span that the facade adds. It takes no lock: the time is an atomic.
    class MyCallback final : public ClientExternalOperating::ConnectCallback {
    public:
        explicit MyCallback(channel::QorContact& contact) : contact_(contact) {}
        void onProgress() override { contact_.note(common::now() + 15000); }

    private:
        channel::QorContact& contact_;
    };

    channel_->values.setReadPeriod(request->settings.refreshPeriodMs);
    MyCallback callback(channel_->contact);
    const protocol::KwpConnect record = makeConnectRecord(request->settings, request->type);
    return client_->connectEcu(record, request.monitor(), callback) && request.succeed();
}

bool QorProtocolAgent::ping(const Request<channel::CmdDataPing>& request) {
    return client_->ping(request->timeoutMs) && request.succeed();
}
