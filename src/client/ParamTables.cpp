#include "client/ParamTables.h"

#include <iterator>
#include <type_traits>
#include <utility>

using protocol::ParamInfo;

namespace {

std::size_t bytesOf(const ParamInfo& record) {
    return record.name.size() + record.firstText.size() + record.secondText.size() +
           record.thirdText.size();
}

std::size_t bytesOf(const common::Doubles& values) {
    return values.size() * sizeof(double);
}

std::size_t bytesOf(const SampledValue& sample) {
    return bytesOf(sample.values) + bytesOf(sample.second) + bytesOf(sample.third);
}

}  // namespace

const ParamInfo* ParamTables::description(const std::string& name) const {
    return find(descriptions_, name);
}

const common::Doubles* ParamTables::values(std::int32_t index) const {
    return find(values_, index);
}

const SampledValue* ParamTables::sample(std::int32_t index) const {
    return find(samples_, index);
}

// Nothing is changed if memory runs out: whatever allocates comes before the first change.
template <class Map, class T>
void ParamTables::store(Map& map, const typename Map::key_type& key, T content, std::size_t bytes) {
    Ages age(1);
    const auto placed = map.try_emplace(key);
    auto& kept = placed.first->second;
    if (placed.second)
        kept.age = age.begin();
    else
        heldBytes_ -= kept.age->bytes;
    ages_.splice(ages_.end(), placed.second ? age : ages_, kept.age);
    kept.content = std::move(content);
    if constexpr (std::is_same_v<typename Map::key_type, std::string>)
        kept.age->name = &placed.first->first;
    else
        kept.age->index = key;
    kept.age->isSample = std::is_same_v<T, SampledValue>;
    kept.age->bytes = bytes + entryBytes;
    heldBytes_ += kept.age->bytes;
    makeRoom();
}

void ParamTables::storeDescription(const std::string& name, ParamInfo record) {
    const std::size_t bytes = name.size() + bytesOf(record);
    store(descriptions_, name, std::move(record), bytes);
}

void ParamTables::storeValues(std::int32_t index, common::Doubles values) {
    const std::size_t bytes = bytesOf(values);
    store(values_, index, std::move(values), bytes);
}

void ParamTables::storeSample(std::int32_t index, SampledValue sample) {
    const std::size_t bytes = bytesOf(sample);
    store(samples_, index, std::move(sample), bytes);
}

template <class Map>
void ParamTables::drop(Map& map, const typename Map::key_type& key) {
    const auto found = map.find(key);
    if (found == map.end()) return;
    heldBytes_ -= found->second.age->bytes;
    ages_.erase(found->second.age);
    map.erase(found);
}

void ParamTables::dropDescription(const std::string& name) {
    drop(descriptions_, name);
}

void ParamTables::dropValues(std::int32_t index) {
    drop(values_, index);
}

void ParamTables::dropSample(std::int32_t index) {
    drop(samples_, index);
}

void ParamTables::await(const std::vector<std::int32_t>& indices) {
    awaitedIndices_ = std::set<std::int32_t>(indices.begin(), indices.end());
}

void ParamTables::awaitNothing() {
    awaitedName_.reset();
    awaitedIndices_.clear();
}

void ParamTables::count(const std::vector<std::int32_t>& indices, std::int32_t difference) {
    for (const std::int32_t index : indices) {
        std::int32_t& streams = streams_[index].streams;
        streams += difference;
        if (streams <= 0) streams_.erase(index);
    }
}

std::vector<std::int32_t> ParamTables::streamed() const {
    std::vector<std::int32_t> indices;
    for (const auto& entry : streams_) indices.push_back(entry.first);
    return indices;
}

ArrivalCursor ParamTables::keepArrivals(std::int32_t index) {
    const auto found = streams_.find(index);
    if (found == streams_.end()) return {index, 0};
    auto& arrivals = found->second.arrivals;
    if (arrivals == nullptr) arrivals = std::make_unique<Arrivals>();
    return {index, arrivals->count()};
}

const Arrivals* ParamTables::arrivals(std::int32_t index, bool former) const {
    const Streams& streams = former ? formerStreams_ : streams_;
    const auto found = streams.find(index);
    return found != streams.end() ? found->second.arrivals.get() : nullptr;
}

void ParamTables::noteArrival(std::int32_t index, double value, common::Moment tick) {
    const auto found = streams_.find(index);
    if (found == streams_.end() || found->second.arrivals == nullptr) return;
    found->second.arrivals->note(value, tick, ++arrivalCount_);
}

void ParamTables::clear() {
    descriptions_.clear();
    values_.clear();
    samples_.clear();
    formerStreams_ = std::move(streams_);
    streams_.clear();
    ages_.clear();
    heldBytes_ = 0;
}

void ParamTables::makeRoom() {
    shrinkTo(maxBytes,
             [this](const Aged& entry) { return !isAwaited(entry) && !isStreamed(entry); });
    shrinkTo(maxBytes, [this](const Aged& entry) { return !isAwaited(entry); });
    shrinkTo(maxAwaitedBytes, [](const Aged&) { return true; });
}

template <class MayGo>
void ParamTables::shrinkTo(std::size_t bytes, MayGo mayGo) {
    const auto newest = std::prev(ages_.end());
    for (auto entry = ages_.begin(); heldBytes_ > bytes && entry != newest;) {
        const auto next = std::next(entry);
        if (mayGo(*entry)) drop(*entry);
        entry = next;
    }
}

bool ParamTables::isAwaited(const Aged& entry) const {
    if (entry.name != nullptr) return awaitedName_ != nullptr && *entry.name == *awaitedName_;
    return awaitedIndices_.count(entry.index) != 0;
}

bool ParamTables::isStreamed(const Aged& entry) const {
    if (entry.name == nullptr) return entry.isSample && streams_.count(entry.index) != 0;
    return streams_.count(descriptions_.at(*entry.name).content.paramIndex) != 0;
}

void ParamTables::drop(const Aged& entry) {
    if (entry.name != nullptr)
        drop(descriptions_, *entry.name);
    else if (entry.isSample)
        drop(samples_, entry.index);
    else
        drop(values_, entry.index);
}
