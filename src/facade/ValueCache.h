#pragma once

#include <string>
#include <vector>

#include "facade/FacadeImpl.h"

/// The values last read or written, as the parameter operations use them. Entries are never
/// removed.
namespace valuecache {

/// Copies the cached arrays out; false (and nothing changed) if there are none or they are half a
/// refresh period old. A period of 0 or 1 thus never answers.
bool find(QorControlFacade::Impl& impl, const std::string& name, std::vector<double>& values,
          std::vector<double>& second, std::vector<double>& third);

void store(QorControlFacade::Impl& impl, const std::string& name,
           QorControlFacade::Impl::CachedValue value);

}  // namespace valuecache
