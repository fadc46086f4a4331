#pragma once

#include <string>

namespace qorctl::serve {

/// The page with which a person sees and operates QOR: one text that needs nothing but this server.
/// Throws std::runtime_error if a part of it is not built in.
std::string panelPage();

}  // namespace qorctl::serve
