#include "serve/Audience.h"

#include <algorithm>
#include <string>

#include "JsonText.h"

namespace qorctl::serve {

void Audience::add(const std::shared_ptr<Client>& client) {
    const std::lock_guard<std::mutex> guard(mutex_);
    clients_.push_back(client);
}

void Audience::remove(ClientNumber client) {
    const std::lock_guard<std::mutex> guard(mutex_);
    clients_.erase(std::remove_if(clients_.begin(), clients_.end(),
                                  [&](const auto& each) { return each->number() == client; }),
                   clients_.end());
}

std::vector<std::shared_ptr<Client>> Audience::all() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return clients_;
}

std::size_t Audience::count() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return clients_.size();
}

void Audience::tell(const char* event, const nlohmann::json& params) const {
    const std::string text = printedOnOneLine(params);
    for (const auto& each : all())
        if (!each->outlet().isBehind()) each->outlet().tell(event, text);
}

void tell(Client& client, const char* event, const nlohmann::json& params) {
    client.outlet().tell(event, printedOnOneLine(params));
}

}  // namespace qorctl::serve
