#pragma once

#include <string>

namespace qorctl::serve {

/// Where a client is told what it has not asked for. Each may be called from every thread and must
/// not block.
class Outlet {
public:
    virtual ~Outlet() = default;

    /// @param params  a JSON object, printed on one line.
    virtual void tell(const char* event, const std::string& params) = 0;
    /// Whether the client reads so slowly that it should not be told anything that can be left out.
    virtual bool isBehind() = 0;

protected:
    Outlet() = default;
    Outlet(const Outlet&) = delete;
    Outlet& operator=(const Outlet&) = delete;
};

}  // namespace qorctl::serve
