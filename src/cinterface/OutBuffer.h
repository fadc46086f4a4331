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

    /// The host wants their number, to come again with a buffer for them.
    bool isForSizeAlone() const { return isQuestion() && needed_ != nullptr; }

    /// Tells the host how many there are; whether they fit.
    bool announce(std::size_t count) const {
        if (needed_ != nullptr) *needed_ = static_cast<unsigned int>(count);
        return isQuestion() || count <= capacity_;
    }
    Outcome tooLarge(std::size_t count) const {
        return failure(Cause::resultTooLarge, "it has " + std::to_string(count) +
                                                  " elements, the buffer has room for " +
                                                  std::to_string(capacity_));
    }
    /// What fits.
    void copy(const T* from, std::size_t count) const {
        if (!isQuestion()) std::copy_n(from, count, elements_);
    }

    /// All of them or, if they do not fit, none; their number in any case.
    Outcome put(const T* from, std::size_t count) const {
        if (!announce(count)) return tooLarge(count);
        copy(from, count);
        return {};
    }

    template <class Container>
    Outcome put(const Container& from) const {
        return put(from.data(), from.size());
    }

private:
    bool isQuestion() const { return elements_ == nullptr; }

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
