#include "serve/WaitingLines.h"

#include <algorithm>
#include <utility>

namespace qorctl::serve {

bool WaitingLines::add(ClientNumber client, Work work) {
    const Lock lock(mutex_);
    const auto line = lines_.find(client);
    if (isOver_ || (line != lines_.end() && line->second.size() >= longest_)) return false;
    append(client, std::move(work));
    return true;
}

bool WaitingLines::addInAnyCase(ClientNumber client, Work work) {
    const Lock lock(mutex_);
    if (isOver_) return false;
    append(client, std::move(work));
    return true;
}

bool WaitingLines::addFirst(Work work) {
    const Lock lock(mutex_);
    if (isOver_) return false;
    first_.push_back(std::move(work));
    changed_.notify_one();
    return true;
}

void WaitingLines::append(ClientNumber client, Work work) {
    std::deque<Work>& line = lines_[client];
    if (line.empty()) turns_.push_back(client);
    line.push_back(std::move(work));
    changed_.notify_one();
}

std::size_t WaitingLines::forget(ClientNumber client) {
    std::deque<Work> dropped;  // whose own ends may call anything
    const Lock lock(mutex_);
    const auto line = lines_.find(client);
    if (line == lines_.end()) return 0;
    dropped = std::move(line->second);
    lines_.erase(line);
    turns_.erase(std::find(turns_.begin(), turns_.end(), client));
    return dropped.size();
}

void WaitingLines::forgetAll() {
    std::map<ClientNumber, std::deque<Work>> dropped;
    const Lock lock(mutex_);
    dropped = std::exchange(lines_, {});
    turns_.clear();
}

std::size_t WaitingLines::count() const {
    const Lock lock(mutex_);
    std::size_t all = 0;
    for (const auto& [client, line] : lines_) all += line.size();
    return all;
}

std::optional<WaitingLines::Work> WaitingLines::next() {
    Lock lock(mutex_);
    changed_.wait(lock, [this] { return isOver_ || !first_.empty() || !turns_.empty(); });
    if (!first_.empty()) {
        Work work = std::move(first_.front());
        first_.pop_front();
        return work;
    }
    if (turns_.empty()) return std::nullopt;
    const ClientNumber client = turns_.front();
    turns_.pop_front();
    const auto line = lines_.find(client);
    Work work = std::move(line->second.front());
    line->second.pop_front();
    if (line->second.empty())
        lines_.erase(line);
    else
        turns_.push_back(client);
    return work;
}

void WaitingLines::end() {
    const Lock lock(mutex_);
    isOver_ = true;
    changed_.notify_all();
}

}  // namespace qorctl::serve
