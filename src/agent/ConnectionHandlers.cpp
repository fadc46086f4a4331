#include "agent/ConnectRecord.h"
#include "agent/QorProtocolAgent.h"
#include "common/Clock.h"

bool QorProtocolAgent::performConnect(const Request<channel::CmdDataConnect>& request) {
    /// Keeps the ECU looking online while a slow connect makes progress: 15 s ahead, so 17 s with
    /// the span that the facade adds.
    class MyCallback final : public ClientExternalOperating::ConnectCallback {
    public:
        explicit MyCallback(channel::Channel& shared) : shared_(shared) {}
        void onProgress() override { shared_.contact.note(common::now() + 15000); }
        void onFigure(std::int32_t figure, std::uint32_t steps) override {
            shared_.progress.note(figure, steps);
        }

    private:
        channel::Channel& shared_;
    };

    channel_->values.setReadPeriod(request->settings.refreshPeriodMs);
    channel_->progress.begin();
    MyCallback callback(*channel_);
    const protocol::KwpConnect record = makeConnectRecord(request->settings, request->type);
    return client_->connectEcu(record, request.monitor(), callback) && request.succeed();
}

bool QorProtocolAgent::ping(const Request<channel::CmdDataPing>& request) {
    return client_->ping(request->timeoutMs) && request.succeed();
}
