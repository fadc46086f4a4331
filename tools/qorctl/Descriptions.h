#pragma once

#include <map>
#include <string>

#include "CallNotes.h"
#include "QorControlFacade.h"

namespace qorctl {

/// The descriptions of parameters. QOR gives the description texts no fixed meaning; the
/// simulated controller puts the meaning first, then the unit, then the group, and the library
/// hands the last two over in exchanged places.
class Descriptions {
public:
    explicit Descriptions(const QorControlFacade& facade) : facade_(facade) {}

    /// Asks once per name; null if that fails. What is asked is noted.
    const wex::ParamDescription* find(const std::string& name, CallNotes& calls);

    /// Empty without a unit or without a description.
    std::string unitOf(const std::string& name);

private:
    const QorControlFacade& facade_;
    std::map<std::string, wex::ParamDescription> known_;
};

inline const std::string& meaningOf(const wex::ParamDescription& description) {
    return description.text2;
}
inline const std::string& groupOf(const wex::ParamDescription& description) {
    return description.text3;
}
inline const std::string& unitOf(const wex::ParamDescription& description) {
    return description.text4;
}

}  // namespace qorctl
