#pragma once

#include <memory>
#include <utility>

#include "facade/FacadeImpl.h"

/// Posts a request that nobody waits for. Always true, the result of such an operation.
inline bool postOnly(QorControlFacade::Impl& impl, std::uint32_t kind,
                     std::shared_ptr<QorControlFacade::Impl::CmdData> data) {
    QorControlFacade::Impl::ProtocolCmd command;
    command.kind = kind;
    command.data = std::move(data);
    impl.commandQueue.push(command);
    return true;
}
