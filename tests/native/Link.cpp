#include "Link.h"

#include <map>

namespace links {
namespace {

struct Listeners {
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<Link>> waiting;  // null: nobody has called
};

Listeners& all() {
    static Listeners listeners;
    return listeners;
}

std::shared_ptr<Link> takeWaiting(const std::string& name) {
    const std::lock_guard<std::mutex> guard(all().mutex);
    return std::move(all().waiting.at(name));
}

}  // namespace

void listen(const std::string& name) {
    const std::lock_guard<std::mutex> guard(all().mutex);
    all().waiting.emplace(name, nullptr);
}

void stopListening(const std::string& name) {
    if (const auto refused = takeWaiting(name)) refused->toLibrary.close();
    const std::lock_guard<std::mutex> guard(all().mutex);
    all().waiting.erase(name);
}

std::shared_ptr<Link> accept(const std::string& name) {
    const auto accepted = takeWaiting(name);
    if (accepted) accepted->toLibrary.accept();
    return accepted;
}

std::shared_ptr<Link> connect(const std::string& name) {
    const std::lock_guard<std::mutex> guard(all().mutex);
    const auto found = all().waiting.find(name);
    if (found == all().waiting.end()) return nullptr;
    found->second = std::make_shared<Link>();
    return found->second;
}

}  // namespace links
