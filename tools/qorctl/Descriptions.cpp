#include "Descriptions.h"

#include <utility>

namespace qorctl {

const wex::ParamDescription* Descriptions::find(const std::string& name, CallNotes& calls) {
    const auto known = known_.find(name);
    if (known != known_.end()) return &known->second;
    wex::ParamDescription description = {};
    if (!calls.note(facade_.getParamDescription(name, description), name)) return nullptr;
    return &known_.emplace(name, std::move(description)).first->second;
}

std::string Descriptions::unitOf(const std::string& name) {
    CallNotes nobodys;
    const wex::ParamDescription* const description = find(name, nobodys);
    return description != nullptr ? qorctl::unitOf(*description) : std::string();
}

}  // namespace qorctl
