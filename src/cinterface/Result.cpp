#include "cinterface/Result.h"

#include <algorithm>
#include <utility>

namespace cinterface {

void ResultPlace::put(std::shared_ptr<const Result> result) {
    // What was there may be long, and goes with the argument, behind the lock.
    const auto content = content_.lock();
    if (!content->closed) content->result.swap(result);
}

void ResultPlace::close() {
    std::shared_ptr<const Result> last;
    const auto content = content_.lock();
    content->closed = true;
    content->result.swap(last);
}

void ResultPlaces::add(const std::shared_ptr<ResultPlace>& place) {
    if (!addUnlessClosed(place)) place->close();
}

bool ResultPlaces::addUnlessClosed(const std::shared_ptr<ResultPlace>& place) {
    const auto content = content_.lock();
    if (content->closed) return false;
    auto& places = content->places;
    places.erase(std::remove_if(places.begin(), places.end(),
                                [](const auto& other) { return other.expired(); }),
                 places.end());
    places.push_back(place);
    return true;
}

void ResultPlaces::close() {
    std::vector<std::weak_ptr<ResultPlace>> places;
    {
        const auto content = content_.lock();
        content->closed = true;
        content->places.swap(places);
    }
    for (const auto& place : places)
        if (const auto present = place.lock()) present->close();
}

}  // namespace cinterface
