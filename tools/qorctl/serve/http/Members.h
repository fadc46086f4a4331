#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>

#include "serve/Client.h"

namespace qorctl::serve::http {

/// The clients whose events are open, by what they call themselves in their requests: a number that
/// nobody can guess. Its operations may be called from every thread.
class Members {
public:
    explicit Members(std::size_t most) : most_(most) {}
    Members(const Members&) = delete;
    Members& operator=(const Members&) = delete;

    /// For one that is to come.
    std::string newName();
    /// False: there are too many.
    bool add(const std::string& name, const std::shared_ptr<Client>& client);
    void remove(const std::string& name);
    /// Null: there is none.
    std::shared_ptr<Client> find(const std::string& name) const;
    bool isFull() const;

private:
    const std::size_t most_;
    mutable std::mutex mutex_;
    // All guarded by mutex_.
    std::map<std::string, std::shared_ptr<Client>> clients_;
    std::random_device random_;
};

}  // namespace qorctl::serve::http
