#include "transport/SocketCommandReplyer.h"

#include "transport/RecordBound.h"
#include "transport/SocketWorker.h"

bool SocketCommandReplyer::reply(std::unique_ptr<IExternalCommand> answer, unsigned int) {
    if (answer && isTooLong(*answer)) return false;
    wasCalled_ = true;
    if (answer)
        stampAndSend(dynamic_cast<ExternalCommand&>(*answer));
    else if (!receivedReply_)
        release();
    return true;
}

void SocketCommandReplyer::acknowledge(std::uint32_t status) {
    CommandPing ping(protocol::Ping{status});
    ping.stampAsReplyTo(requestId_);
    worker_.acknowledge(ping);
}

void SocketCommandReplyer::release() {
    CommandPing ping(protocol::Ping{0});
    stampAndSend(ping);
}

void SocketCommandReplyer::stampAndSend(ExternalCommand& answer) {
    answer.stampAsReplyTo(requestId_);
    worker_.sendNow(answer);
}
