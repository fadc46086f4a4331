#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "QorControlFacade.h"

namespace qorctl {

/// The monitor of a connect: Ctrl-C cancels it, and the reason of a failure is kept.
class ConnectMonitor final : public IProgressMonitor {
public:
    void reserved1() override {}
    void reserved2() override {}
    void reserved3() override {}
    void reserved4() override {}
    void reserved5() override {}
    void reserved6() override {}
    bool isCancelled() override;
    void reserved8() override {}
    void reserved9() override {}
    void reportError(const std::string& message, unsigned int code) override;

    /// Whether QOR has accepted the request: from then on the library looks for cancellation.
    bool isAccepted() const { return accepted_; }

    /// Why the connect failed; empty if the library did not say.
    std::string error() const;

private:
    std::atomic<bool> accepted_{false};
    mutable std::mutex mutex_;
    std::string error_;
};

}  // namespace qorctl
