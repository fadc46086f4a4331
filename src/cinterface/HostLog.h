#pragma once

#include <cstdarg>
#include <string>

#include "cinterface/HostFunction.h"
#include "cinterface/QorControl.h"
#include "qorcontrol/HostInterfaces.h"

namespace cinterface {

/// The log of a facade that hands its lines to a function of the host's, as UTF-8.
class HostLog final : public EolLog {
public:
    void reserved1(const char* format, ...) const override;
    void info(const char* format, ...) const override;
    void error(const char* format, ...) const override;

    void replace(QorLogFunction function, void* user) { function_.replace(function, user); }

private:
    void tell(bool isFailure, const char* format, std::va_list values) const;

    mutable HostFunction<QorLogFunction> function_;
};

}  // namespace cinterface
