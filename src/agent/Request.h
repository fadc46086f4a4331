#pragma once

#include <memory>
#include <utility>

#include "facade/channel/ProtocolCmd.h"

/// One request as its handler sees it: its payload as what its kind wants, and how to answer it.
template <class Data>
class Request {
public:
    /// `verdict` is the client's, at the end of the handler.
    Request(const channel::ProtocolCmd& command, Data& data, const common::Verdict& verdict)
        : command_(command), data_(data), verdict_(verdict) {}

    Data* operator->() const { return &data_; }
    Data& operator*() const { return data_; }

    /// The host's; null if it gave none.
    IProgressMonitor* monitor() const { return command_.monitor; }

    /// Tells the caller, if one waits, that it succeeded. `results` is null where there are none.
    /// Always true, the result of a handler.
    bool succeed(std::shared_ptr<Data> results = nullptr) const {
        // (To one that has given up it would only take memory, as long as the request is held.)
        if (command_.replyQueue != nullptr && !command_.replyQueue->isGivenUp())
            command_.replyQueue->push(
                {channel::CmdResponse::success, std::move(results), verdict_});
        return true;
    }

private:
    const channel::ProtocolCmd& command_;
    Data& data_;
    const common::Verdict& verdict_;
};
