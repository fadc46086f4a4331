#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <vector>

#include "serve/Client.h"

namespace qorctl::serve {

/// All lasting clients, who are told what goes on. Its operations may be called from every thread.
class Audience {
public:
    Audience() = default;
    Audience(const Audience&) = delete;
    Audience& operator=(const Audience&) = delete;

    void add(const std::shared_ptr<Client>& client);
    void remove(ClientNumber client);
    std::vector<std::shared_ptr<Client>> all() const;
    std::size_t count() const;

    /// Tells all that keep up.
    void tell(const char* event, const nlohmann::json& params) const;

private:
    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<Client>> clients_;  // guarded by mutex_
};

/// The same for one of them.
void tell(Client& client, const char* event, const nlohmann::json& params);

}  // namespace qorctl::serve
