#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <utility>

/// Bytes that wait to be sent, in their order. They are taken over and consumed without being
/// moved in memory, however many they are.
class UnsentOutput {
public:
    /// Pieces are joined up to this length, so that very many small ones take little memory.
    static constexpr std::size_t joinedBytes = 65536;

    std::size_t size() const { return bytes_; }
    bool isEmpty() const { return bytes_ == 0; }

    void append(std::string&& piece) {
        const std::size_t length = piece.size();
        if (!pieces_.empty() && pieces_.back().size() + length <= joinedBytes)
            pieces_.back() += piece;
        else if (length != 0)
            pieces_.push_back(std::move(piece));
        bytes_ += length;
    }

    /// What is next, unless nothing is left: not all, but a whole piece.
    std::string_view front() const { return std::string_view(pieces_.front()).substr(sent_); }

    /// Forgets so many bytes of `front`, once they are sent.
    void dropFront(std::size_t count) {
        sent_ += count;
        bytes_ -= count;
        if (sent_ < pieces_.front().size()) return;
        pieces_.pop_front();
        sent_ = 0;
    }

    /// Puts back, in front of whatever came meanwhile, what was taken from here.
    void putBack(UnsentOutput&& taken) noexcept {
        pieces_.splice(pieces_.begin(), taken.pieces_);
        bytes_ += taken.bytes_;
        sent_ = taken.sent_;
    }

private:
    std::list<std::string> pieces_;
    std::size_t sent_ = 0;   // bytes of the first piece
    std::size_t bytes_ = 0;  // of all pieces, less those
};
