#include "transport/SocketCommandReplyer.h"

#include "transport/SocketWorker.h"

bool SocketCommandReplyer::reply(std::unique_ptr<IExternalCommand> answer, unsigned int) {
    wasCalled_ = true;
    if (answer)
        stampAndSend(dynamic_cast<ExternalCommand&>(*answer));
    else if (!receivedReply_)
        acknowledge(0);
    return true;
}

void SocketCommandReplyer::acknowledge(std::uint32_t status) {
    CommandPing ping(protocol::Ping{status});
    stampAndSend(ping);
}

void SocketCommandReplyer::stampAndSend(ExternalCommand& answer) {
    answer.stampAsReplyTo(requestId_);
    worker_.sendNow(answer);
}
