#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "common/Moment.h"
#include "protocol/Records.h"

/// The three arrays that QOR last told of a parameter, and when they were stored.
struct SampledValue {
    std::vector<double> values;
    std::vector<double> second;
    std::vector<double> third;
    common::Moment tick;
};

/// One answer that is not kept by a key: whether it has come, and what it carried.
template <class T>
struct Arrival {
    bool arrived = false;
    T content;
};

/// Everything in the client that both its own thread and the receiving side touch; reachable only
/// under the client's lock. Parameters are keyed by QOR's index of them.
struct ClientState {
    // The connection.
    bool ecuOnline = false;
    common::Moment lastOnlineQuery;
    protocol::KwpConnect connectRecord;
    bool connecting = false;  ///< from a connect, also a failed one, to the next disconnect
    std::int32_t bootstrapProgress = -1;
    std::deque<std::int32_t> bootstrapResults;  ///< oldest first

    // The caches.
    std::map<std::string, protocol::ParamInfo> descriptions;
    std::map<std::int32_t, std::vector<double>> values;
    std::map<std::int32_t, SampledValue> samples;
    std::map<std::int32_t, std::int32_t> subscriptions;
    Arrival<std::vector<protocol::DtcRecord>> dtcs;
    Arrival<std::vector<protocol::CanBusItem>> canFrames;
    Arrival<protocol::ExecKwp> kwpAnswer;
    protocol::GetHex model;  ///< the last one that QOR sent; nobody asks for it yet
};
