#include "serve/http/Members.h"

#include <fmt/format.h>

namespace qorctl::serve::http {

bool Members::add(const std::string& name, const std::shared_ptr<Client>& client) {
    const std::lock_guard<std::mutex> guard(mutex_);
    return clients_.size() < most_ && clients_.emplace(name, client).second;
}

void Members::remove(const std::string& name) {
    const std::lock_guard<std::mutex> guard(mutex_);
    clients_.erase(name);
}

std::shared_ptr<Client> Members::find(const std::string& name) const {
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto found = clients_.find(name);
    return found == clients_.end() ? nullptr : found->second;
}

bool Members::isFull() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return clients_.size() >= most_;
}

std::string Members::newName() {
    const std::lock_guard<std::mutex> guard(mutex_);
    return fmt::format("{:08x}{:08x}{:08x}{:08x}", random_(), random_(), random_(), random_());
}

}  // namespace qorctl::serve::http
