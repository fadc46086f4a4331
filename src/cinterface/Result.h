#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cinterface/QorControl.h"
#include "common/Guarded.h"

namespace cinterface {

/// What one call has given: of the kinds that it gives, the others are not there.
struct Result {
    std::optional<std::vector<std::vector<double>>> arrays;
    std::optional<std::string> bytes;
    std::optional<std::vector<std::vector<std::string>>> texts;  ///< rows; in the code page
    std::optional<std::vector<QorDtc>> dtcs;
    std::optional<std::vector<QorCanBusItem>> items;
};

/// Where one thread's last result on one handle is. The thread puts it in and looks at it; closing
/// the handle empties it, on whatever thread that happens.
class ResultPlace {
public:
    /// Does nothing once the handle has been closed.
    void put(std::shared_ptr<const Result> result);
    /// Null if there is none.
    std::shared_ptr<const Result> get() { return content_.lock()->result; }

    void close();
    bool isClosed() { return content_.lock()->closed; }

private:
    struct Content {
        std::shared_ptr<const Result> result;
        bool closed = false;
    };
    common::Guarded<Content> content_;
};

/// The places of one handle, which each belong to a thread: what a thread leaves behind when it
/// ends is gone with it.
class ResultPlaces {
public:
    void add(const std::shared_ptr<ResultPlace>& place);
    /// Empties all that there are and all that come.
    void close();

private:
    bool addUnlessClosed(const std::shared_ptr<ResultPlace>& place);

    struct Content {
        std::vector<std::weak_ptr<ResultPlace>> places;
        bool closed = false;
    };
    common::Guarded<Content> content_;
};

}  // namespace cinterface
