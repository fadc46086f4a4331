#include "Descriptions.h"

#include <utility>

namespace qorctl {

const wex::ParamDescription* Descriptions::find(const std::string& name) {
    const auto known = known_.find(name);
    if (known != known_.end()) return &known->second;
    wex::ParamDescription description = {};
    if (!facade_.getParamDescription(name, description)) return nullptr;
    return &known_.emplace(name, std::move(description)).first->second;
}

std::string Descriptions::unitOf(const std::string& name) {
    const wex::ParamDescription* const description = find(name);
    return description != nullptr ? qorctl::unitOf(*description) : std::string();
}

}  // namespace qorctl
