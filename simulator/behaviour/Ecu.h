#pragma once

#include <string>
#include <vector>

#include "behaviour/Bootstrap.h"
#include "behaviour/Subscription.h"
#include "model/EcuModel.h"
#include "model/ParameterStore.h"

namespace simulator {

/// Everything that changes while the simulated QOR runs. The model must outlive it.
struct Ecu {
    explicit Ecu(const EcuModel& ecuModel)
        : model(ecuModel), parameters(ecuModel.parameters), troubleCodes(ecuModel.troubleCodes) {
        for (const CanModel& frame : ecuModel.canFrames) sentCanValues.push_back(frame.value);
    }

    void disconnect() {
        bootstrap.disconnect();
        parameters.releaseActuators();
    }

    const EcuModel& model;
    ParameterStore parameters;
    std::vector<TroubleCode> troubleCodes;
    Bootstrap bootstrap;
    Subscription subscription;
    bool canBusOpen = false;
    std::vector<std::int32_t> sentCanValues;  ///< in the order of the model's frames
    std::string openModel;                    ///< path of the model that is being edited
};

}  // namespace simulator
