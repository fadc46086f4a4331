#pragma once

#include <condition_variable>
#include <mutex>
#include <string>

#include "serve/Outlet.h"

namespace qorctl::serve::http {

/// The events of one client on their way to the thread of its connection.
class EventOutlet final : public Outlet {
public:
    void tell(const char* event, const std::string& params) override;
    bool isBehind() override;

    /// What there is, waited for as long as that; empty if nothing came. Of one thread.
    std::string next(unsigned int waitMs);
    /// What `next` gave has been sent.
    void noteSent();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    // All guarded by mutex_.
    std::string waiting_;
    std::size_t beingSent_ = 0;
};

}  // namespace qorctl::serve::http
