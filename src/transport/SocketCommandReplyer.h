#pragma once

#include "protocol/Commands.h"

class SocketWorker;

/// Answers one command that was received over the socket. Replies leave at once, without waiting
/// for anything, whatever time-out is given; acknowledgements of a row of values leave together.
class SocketCommandReplyer final : public IExternalCommand::ICommandReplyer {
public:
    SocketCommandReplyer(SocketWorker& worker, std::uint32_t requestId, bool receivedReply)
        : worker_(worker), requestId_(requestId), receivedReply_(receivedReply) {}

    /// Without an answer, a ping of status 0 goes out in its place, unless the received command
    /// was itself a reply.
    bool reply(std::unique_ptr<IExternalCommand> answer, unsigned int timeoutMs) override;

    /// Sends a ping of this status as the answer, once the handler has returned: it may wait for
    /// the acknowledgements of what has arrived with it.
    void acknowledge(std::uint32_t status);

    bool wasCalled() const { return wasCalled_; }

private:
    void release();
    void stampAndSend(ExternalCommand& answer);

    SocketWorker& worker_;
    const std::uint32_t requestId_;
    const bool receivedReply_;
    bool wasCalled_ = false;
};
