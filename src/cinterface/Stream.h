#pragma once

namespace cinterface {

class Stream {};

}  // namespace cinterface
