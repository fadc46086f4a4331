#pragma once

#include "facade/FacadeState.h"
#include "facade/QorControlFacade.h"

class QorControlFacade::Impl final : public FacadeState {
public:
    using FacadeState::FacadeState;
};

/// The way in for those of the library's own functions that are no members.
struct FacadeAccess {
    static const FacadeState& stateOf(const QorControlFacade& facade) { return *facade.impl_; }
};
