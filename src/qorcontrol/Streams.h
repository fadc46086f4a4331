#pragma once

#include <string>
#include <vector>

// By its bare name, which is how hosts have it on their path.
#include <QorControlFacade.h>

#include "qorcontrol/LentQueue.h"

/// Streams of `QorControlFacade` with queues of their own, which are freed when the library has let
/// go of them and not before: when it has answered a ping that was made after the stop. A queue of
/// which that is not known is kept until the process ends, and the host's log is told.
///
/// Declare a stream after the facade, and after the log if there is one: both must outlive it. Any
/// thread may pop; the end is its owner's, when no other thread pops any more. With more than ten
/// requests waiting at once a stop of trouble codes can be pushed out: hosts of so many threads end
/// that stream while the others are quiet.
namespace qorcontrol {

namespace detail {

/// The course that both kinds of stream share. `Item` is what one pop gives.
template <class Item>
class Stream {
public:
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    /// Takes the oldest item, waiting at most `timeoutMs`. False may come earlier; false at once
    /// after the end.
    bool pop(Item& item, unsigned int timeoutMs) {
        ThreadSafeQueue<Item>* const queue = queue_.get();
        return queue != nullptr && queue->pop(item, timeoutMs);
    }

    /// False: the library's agent has ended, so nothing will ever come, and the queue is gone.
    bool isBegun() const noexcept { return isBegun_; }

    /// The queue, for what else it can do (its event, whether it overflowed). Null after the end.
    ThreadSafeQueue<Item>* queue() const noexcept { return queue_.get(); }

protected:
    Stream(const QorControlFacade& qor, unsigned int slots, const EolLog* log)
        : qor_(qor), log_(log), queue_(slots) {}
    ~Stream() {
        if (queue_.get() == nullptr || log_ == nullptr) return;
        log_->error("FAILED to end a stream: its queue is kept until the process ends");
    }

    const QorControlFacade& facade() const noexcept { return qor_; }

    /// With what the start has returned.
    void noteStart(bool isBegun) noexcept {
        isBegun_ = isBegun;
        if (!isBegun) queue_.takeBack();
    }

    /// `stop` posts the stop: after it, a ping that is answered shows that the stop was seen.
    template <class Stop>
    bool endAfter(const Stop& stop, unsigned int timeoutMs) noexcept {
        if (queue_.get() == nullptr) return true;
        try {
            if (!stop(qor_, queue_.get()) || !qor_.pingQor(timeoutMs)) return false;
        } catch (...) {
            return false;  // out of memory
        }
        queue_.takeBack();
        return true;
    }

private:
    const QorControlFacade& qor_;
    const EolLog* const log_;
    LentQueue<Item> queue_;
    bool isBegun_ = false;
};

}  // namespace detail

/// Current values, see `QorControlFacade::startParamRead`.
class ValueStream : public detail::Stream<std::vector<QorControlFacade::ParamValue>> {
public:
    using Values = std::vector<QorControlFacade::ParamValue>;

    /// Begins. One slot always holds the newest values; a queue of many slots holds every change
    /// for as many milliseconds.
    ValueStream(const QorControlFacade& qor, const std::vector<std::string>& names,
                unsigned int slots, const EolLog* log = nullptr)
        : Stream(qor, slots, log) {
        noteStart(facade().startParamRead(queue(), names));
    }

    /// Ends it; with a QOR that is silent that takes up to 4 s.
    ~ValueStream() { end(2000); }

    /// Ends it now. True: the library has let go of the queue, and the queue is gone. False: it did
    /// not answer in time; ask again later. Waits up to twice `timeoutMs`.
    bool end(unsigned int timeoutMs) noexcept {
        return endAfter(
            [](const QorControlFacade& qor, ThreadSafeQueue<Values>* queue) {
                qor.stopParamRead(queue);
                return true;
            },
            timeoutMs);
    }
};

/// Trouble codes, see `QorControlFacade::startDtcRead`. A facade has one such stream: end one
/// before you begin another, for the end of either ends what there is.
class TroubleCodeStream : public detail::Stream<std::vector<QorControlFacade::DtcDescription>> {
public:
    using Codes = std::vector<QorControlFacade::DtcDescription>;

    /// Begins: a list every `periodMs`, for which QOR has `readTimeoutMs` each time.
    TroubleCodeStream(const QorControlFacade& qor, unsigned int readTimeoutMs,
                      unsigned int periodMs, unsigned int slots, const EolLog* log = nullptr)
        : Stream(qor, slots, log) {
        noteStart(facade().startDtcRead(queue(), readTimeoutMs, periodMs));
    }

    /// Ends it; with a QOR that is silent that takes up to 4 s.
    ~TroubleCodeStream() { end(2000); }

    /// As `ValueStream::end`.
    bool end(unsigned int timeoutMs) noexcept {
        return endAfter(
            [](const QorControlFacade& qor, ThreadSafeQueue<Codes>*) { return qor.stopDtcRead(); },
            timeoutMs);
    }
};

}  // namespace qorcontrol
