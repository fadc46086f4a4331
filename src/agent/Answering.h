#pragma once

#include <memory>
#include <utility>

#include "facade/CmdData.h"

/// The payload of a request as the `Data` that its kind wants; null if it is anything else.
template <class Data>
Data* payloadOf(const QorControlFacade::Impl::ProtocolCmd& command) {
    return dynamic_cast<Data*>(command.data.get());
}

/// Tells the caller of a request, if one waits, that it succeeded. `data` carries the results;
/// null where there are none. Always true, the result of a handler.
inline bool answer(const QorControlFacade::Impl::ProtocolCmd& command,
                   std::shared_ptr<QorControlFacade::Impl::CmdData> data = nullptr) {
    using Response = QorControlFacade::Impl::CmdResponse;
    // (To one that has given up it would only take memory, as long as the request is held.)
    if (command.replyQueue != nullptr && !command.replyQueue->isGivenUp())
        command.replyQueue->push(Response{Response::success, std::move(data)});
    return true;
}
