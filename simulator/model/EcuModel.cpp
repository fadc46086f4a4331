#include "model/EcuModel.h"

#include <algorithm>
#include <iterator>

namespace simulator {

Names namesOf(const std::vector<ParameterModel>& parameters) {
    Names names;
    std::transform(parameters.begin(), parameters.end(), std::back_inserter(names),
                   [](const ParameterModel& parameter) { return parameter.name; });
    return names;
}

}  // namespace simulator
