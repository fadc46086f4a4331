#include "behaviour/Outbox.h"

#include <utility>

namespace simulator {

void Outbox::post(Delivery delivery, std::uint64_t dueMs) {
    waiting_.emplace(dueMs, std::move(delivery));
}

std::optional<Piece> Outbox::take(std::uint64_t nowMs) {
    if (rest_) {
        if (restDueMs_ > nowMs) return std::nullopt;
        const Delivery rest = std::move(*rest_);
        rest_.reset();
        return Piece{rest.raw, rest.closeAfter, std::nullopt, true, {}};
    }
    while (!waiting_.empty() && waiting_.begin()->first <= nowMs) {
        Delivery delivery = std::move(waiting_.begin()->second);
        waiting_.erase(waiting_.begin());
        const bool hold = delivery.mergeWithNext;
        Piece piece = cut(std::move(delivery), nowMs);
        if (!hold) return piece;
        held_ = std::move(piece.bytes);
        if (piece.record) return Piece{"", false, std::move(piece.record), false, {}};
    }
    return std::nullopt;
}

std::optional<std::uint64_t> Outbox::nextMs() const {
    if (rest_) return restDueMs_;
    if (waiting_.empty()) return std::nullopt;
    return waiting_.begin()->first;
}

void Outbox::clear() {
    waiting_.clear();
    held_.clear();
    rest_.reset();
}

Piece Outbox::cut(Delivery delivery, std::uint64_t nowMs) {
    Piece piece;
    const std::string bytes = delivery.bytes();
    piece.record = std::move(delivery.record);
    piece.close = delivery.closeAfter;
    piece.form = delivery.form;
    piece.bytes = std::exchange(held_, {});
    if (delivery.closeMid) {
        piece.bytes += bytes.substr(0, bytes.size() / 2);
        piece.close = true;
    } else if (delivery.splitAfterBytes && *delivery.splitAfterBytes < bytes.size()) {
        piece.bytes += bytes.substr(0, *delivery.splitAfterBytes);
        piece.close = false;
        rest_.emplace();
        rest_->raw = bytes.substr(*delivery.splitAfterBytes);
        rest_->closeAfter = delivery.closeAfter;
        restDueMs_ = nowMs + delivery.gapMs;
    } else {
        piece.bytes += bytes;
    }
    return piece;
}

}  // namespace simulator
