#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "Station.h"
#include "Waiting.h"

/// A station whose host has a queue for values and one for trouble codes.
class StreamingTest : public testing::TestWithParam<Transport> {
protected:
    using Values = std::vector<QorControlFacade::ParamValue>;
    using Codes = std::vector<QorControlFacade::DtcDescription>;
    using ParamQueue = ThreadSafeQueue<Values>;
    using Names = std::vector<std::string>;

    static constexpr unsigned periodMs = 150;
    static constexpr unsigned amply = 8000;

    // Before the station: the agent fills them until it has ended.
    ParamQueue values{10};
    ThreadSafeQueue<Codes> codes{10};
    Station station{GetParam()};

    bool startConnected() { return station.start() && station.connectEcu(periodMs); }

    static std::set<std::string> namesOf(const Values& batch) {
        std::set<std::string> names;
        for (const auto& value : batch) names.insert(value.name);
        return names;
    }
    /// Whether a batch of exactly these names comes in time.
    static bool awaitBatchOf(const std::set<std::string>& names, ParamQueue& from) {
        return eventually(amply, [&] {
            Values batch;
            return from.pop(batch, 200) && namesOf(batch) == names;
        });
    }
    bool awaitBatchOf(const std::set<std::string>& names) { return awaitBatchOf(names, values); }

    /// Registers the names and waits until they are sure to be read: the first batch may still be
    /// of the round in which the agent notes that it reads them, and what the host changes in
    /// that very round is lost.
    bool streams(const Names& names, ParamQueue& into) {
        const std::set<std::string> all(names.begin(), names.end());
        return station->startParamRead(&into, names) && awaitBatchOf(all, into) &&
               awaitBatchOf(all, into);
    }
    bool streams(const Names& names) { return streams(names, values); }

    /// Empties the queue and sees that no more comes for a while.
    static bool hasDried(ParamQueue& queue) {
        Values batch;
        while (queue.pop(batch, 0)) continue;
        return !queue.pop(batch, 400) && !queue.pop(batch, 100);
    }
    bool hasDried() { return hasDried(values); }

    bool awaitRequest(const std::string& request) {
        return eventually(amply, [&] {
            const auto requests = station.requests();
            return std::find(requests.begin(), requests.end(), request) != requests.end();
        });
    }
    /// Whether a list of trouble codes of that length comes in time.
    bool awaitCodes(std::size_t count) {
        return eventually(amply, [&] {
            Codes list;
            return codes.pop(list, 200) && list.size() == count;
        });
    }
};
