#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "common/Guarded.h"

namespace cinterface {

/// What a number stands for: one of the one kind is never found in a table of the other.
enum class NumberKind : std::uint32_t { handle = 0, stream = 1 };

/// Objects by the numbers that the host has for them. A number is never given out twice, so one
/// that was removed, or never was one, is found nowhere, whatever has come in its place.
///
/// A number is a place and how often that place was used: a place that has been used as often as
/// can be counted is not used any more. The place that has been free for longest is used first.
template <class T, NumberKind kind>
class HandleTable {
public:
    using Number = std::uint32_t;

    static constexpr unsigned int maxEntries = 1u << 14;
    static constexpr unsigned int maxUses = (1u << 17) - 1;

    /// 0, which is no number, if the table is full.
    Number add(std::shared_ptr<T> object) {
        const auto places = places_.lock();
        std::uint32_t index = places->firstFree;
        if (index != none) {
            places->firstFree = places->all[index].nextFree;
            if (places->firstFree == none) places->lastFree = none;
        } else {
            if (places->all.size() == maxEntries) return 0;
            index = static_cast<std::uint32_t>(places->all.size());
            places->all.emplace_back();
        }
        Place& place = places->all[index];
        place.object = std::move(object);
        ++place.uses;
        return numberOf(index, place.uses);
    }

    /// Null if there is none of that number.
    std::shared_ptr<T> find(Number number) {
        const auto places = places_.lock();
        Place* const place = places->find(number);
        return place == nullptr ? nullptr : place->object;
    }

    /// Takes it out; null if there was none of that number.
    std::shared_ptr<T> remove(Number number) noexcept {
        const auto places = places_.lock();
        Place* const place = places->find(number);
        if (place == nullptr) return nullptr;
        if (place->uses < maxUses) places->giveBack(indexOf(number));
        return std::move(place->object);
    }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFFu;

    struct Place {
        std::shared_ptr<T> object;
        std::uint32_t uses = 0;
        std::uint32_t nextFree = none;
    };

    struct Places {
        std::vector<Place> all;
        std::uint32_t firstFree = none;
        std::uint32_t lastFree = none;

        Place* find(Number number) {
            const std::uint32_t index = indexOf(number);
            if (index >= all.size()) return nullptr;
            Place& place = all[index];
            return place.object != nullptr && numberOf(index, place.uses) == number ? &place
                                                                                    : nullptr;
        }
        void giveBack(std::uint32_t index) {
            all[index].nextFree = none;
            (lastFree == none ? firstFree : all[lastFree].nextFree) = index;
            lastFree = index;
        }
    };

    // Bit 0: the kind; then 14 bits of place and 17 of uses, which are never 0.
    static constexpr Number numberOf(std::uint32_t index, std::uint32_t uses) {
        return uses << 15 | index << 1 | static_cast<std::uint32_t>(kind);
    }
    static constexpr std::uint32_t indexOf(Number number) { return number >> 1 & (maxEntries - 1); }

    common::Guarded<Places> places_;
};

}  // namespace cinterface
