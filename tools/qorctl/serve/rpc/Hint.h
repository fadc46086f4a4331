#pragma once

#include <string>
#include <vector>

namespace qorctl::serve {

/// A name that a client has written, in quotes and no longer than a person reads, with the one of
/// `names` that may be meant.
std::string quotedWithHint(const std::string& written, const std::vector<std::string>& names);

/// The beginning of a text of a client's, for a message about it.
std::string beginningOf(const std::string& text);

}  // namespace qorctl::serve
