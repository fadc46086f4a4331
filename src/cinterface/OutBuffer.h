#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

#include "cinterface/Arguments.h"
#include "cinterface/Refusal.h"

namespace cinterface {

/// The host's buffer, its capacity in elements and where the needed number of elements goes. The
/// one place that writes into arrays of the host's.
template <class T>
class OutBuffer {
public:
    /// Throws a Refusal if they do not go together.
    OutBuffer(T* elements, unsigned int capacity, unsigned int* needed, const char* what)
        : elements_(elements), capacity_(capacity), needed_(needed) {
        if (elements == nullptr && capacity != 0) refuseNull(what);
    }

    /// Neither the elements nor their number are wanted.
    bool isUnwanted() const { return elements_ == nullptr && needed_ == nullptr; }

    /// Only their number is, if that.
    bool isQuestion() const { return elements_ == nullptr; }

    bool fits(std::size_t count) const { return isQuestion() || count <= capacity_; }

    /// All of them or, if they do not fit, none; their number in any case.
    Outcome put(const T* from, std::size_t count) const {
        if (needed_ != nullptr) *needed_ = static_cast<unsigned int>(count);
        if (!fits(count))
            return failure(Cause::resultTooLarge,
                           "The result has " + std::to_string(count) +
                               " elements, the buffer room for " + std::to_string(capacity_) + ".",
                           "Ask for the result with a larger buffer; QOR is not asked again.");
        if (!isQuestion()) std::copy_n(from, count, elements_);
        return {};
    }

    template <class Container>
    Outcome put(const Container& from) const {
        return put(from.data(), from.size());
    }

private:
    T* const elements_;
    const unsigned int capacity_;
    unsigned int* const needed_;
};

/// The same for texts, which get a zero at their end.
class OutText : public OutBuffer<char> {
public:
    using OutBuffer::OutBuffer;

    Outcome put(const std::string& text) const {
        return OutBuffer::put(text.c_str(), text.size() + 1);
    }
};

/// The same for bytes, which the facade has as texts.
class OutBytes : public OutBuffer<unsigned char> {
public:
    using OutBuffer::OutBuffer;

    Outcome put(const std::string& bytes) const {
        return OutBuffer::put(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    }
};

}  // namespace cinterface
