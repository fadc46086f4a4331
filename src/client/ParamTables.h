#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "client/Arrivals.h"
#include "common/Doubles.h"
#include "common/Moment.h"
#include "protocol/Records.h"
#include "protocol/RecordStream.h"

/// The three arrays that QOR last told of a parameter, and when they were stored.
struct SampledValue {
    common::Doubles values;
    common::Doubles second;
    common::Doubles third;
    common::Moment tick;
};

/// What QOR has told of parameters: descriptions by name; by QOR's index the values it answered
/// with, and the samples it sent by itself or as three arrays. Beside them the count of streams
/// per index.
///
/// Whatever a peer sends, the three tables together hold no more than `maxBytes`: beyond that the
/// oldest entries make room, those that are streamed last of all. The newest entry always stays,
/// and so do those that somebody waits for, as far as one record can carry them
/// (`maxAwaitedBytes`). What has made room is simply asked for again.
class ParamTables {
public:
    /// Counted as the texts and numbers of an entry and `entryBytes` for the entry itself.
    static constexpr std::size_t maxBytes = 64u << 20;
    static constexpr std::size_t entryBytes = 192;
    /// With what somebody waits for.
    static constexpr std::size_t maxAwaitedBytes = maxBytes + protocol::maxRecordBytes;

    ParamTables() = default;
    ParamTables(const ParamTables&) = delete;
    ParamTables& operator=(const ParamTables&) = delete;

    /// Null if there is none. The pointers hold until the tables are next changed.
    const protocol::ParamInfo* description(const std::string& name) const;
    const common::Doubles* values(std::int32_t index) const;
    const SampledValue* sample(std::int32_t index) const;

    /// Replace or add an entry, which is the newest then.
    void storeDescription(const std::string& name, protocol::ParamInfo record);
    void storeValues(std::int32_t index, common::Doubles values);
    void storeSample(std::int32_t index, SampledValue sample);

    void dropDescription(const std::string& name);
    void dropValues(std::int32_t index);
    void dropSample(std::int32_t index);

    /// What the caller waits for from now on, in place of what it waited for before.
    void await(const std::string& name) { awaitedName_ = std::make_unique<std::string>(name); }
    void await(const std::vector<std::int32_t>& indices);
    void awaitNothing();

    /// Changes the count of streams of each index; it never falls below 0.
    void count(const std::vector<std::int32_t>& indices, std::int32_t difference);
    /// The indices with streams, in ascending order.
    std::vector<std::int32_t> streamed() const;
    /// From now on what arrives for an index is kept, as long as it has streams. Its cursor.
    ArrivalCursor keepArrivals(std::int32_t index);
    /// What has arrived; null if it is not kept. After a `clear` what was kept before can still be
    /// had as `former`, until the next one.
    const Arrivals* arrivals(std::int32_t index, bool former) const;
    /// Kept only where somebody wants that.
    void noteArrival(std::int32_t index, double value, common::Moment tick);

    /// Forgets all entries and streams.
    void clear();

    std::size_t heldBytes() const { return heldBytes_; }

private:
    struct Streamed {
        std::int32_t streams = 0;
        std::unique_ptr<Arrivals> arrivals;  // null: nobody wants more than the latest value
    };
    using Streams = std::map<std::int32_t, Streamed>;

    /// One entry of one of the tables; a description has its name, the others have an index.
    struct Aged {
        const std::string* name = nullptr;
        std::int32_t index = 0;
        bool isSample = false;
        std::size_t bytes = 0;
    };
    using Ages = std::list<Aged>;

    template <class T>
    struct Kept {
        T content;
        Ages::iterator age;
    };
    template <class Key, class T>
    using Table = std::map<Key, Kept<T>>;

    template <class Map>
    static const auto* find(const Map& map, const typename Map::key_type& key) {
        const auto found = map.find(key);
        return found != map.end() ? &found->second.content : nullptr;
    }
    template <class Map, class T>
    void store(Map& map, const typename Map::key_type& key, T content, std::size_t bytes);
    template <class Map>
    void drop(Map& map, const typename Map::key_type& key);

    void makeRoom();
    /// Drops entries that `mayGo` lets go, the oldest first, until no more than `bytes` are held.
    template <class MayGo>
    void shrinkTo(std::size_t bytes, MayGo mayGo);
    bool isAwaited(const Aged& entry) const;
    bool isStreamed(const Aged& entry) const;
    void drop(const Aged& entry);

    Ages ages_;  // of all entries, the oldest first
    std::size_t heldBytes_ = 0;
    Table<std::string, protocol::ParamInfo> descriptions_;
    Table<std::int32_t, common::Doubles> values_;
    Table<std::int32_t, SampledValue> samples_;
    Streams streams_;
    Streams formerStreams_;  // of before the last clear, for their arrivals
    std::uint64_t arrivalCount_ = 0;
    std::unique_ptr<std::string> awaitedName_;  // null: none
    std::set<std::int32_t> awaitedIndices_;
};
