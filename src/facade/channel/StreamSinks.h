#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/Moment.h"
#include "common/Verdict.h"
#include "facade/QorControlFacade.h"

/// Where streams may go besides the queues of C++ hosts, for who wants to know more: each value
/// once, with the time of its arrival. The agent calls them on its thread, without a lock, and
/// holds a share of each; they must return soon.
namespace channel {

/// One value as it arrived.
struct Sample {
    std::size_t name = 0;  ///< which of the registered names
    double value = 0;
    common::Moment arrival;
    std::uint64_t missed = 0;  ///< so many of this name arrived before it and could not be kept
};

class ValueSink {
public:
    virtual ~ValueSink() = default;
    /// In the order of their arrival, also among the names.
    virtual void take(const Sample& sample) = 0;
    /// Whether QOR was set up to send these values: cause `none`, or why it was not. It is tried
    /// again.
    virtual void notePreparation(const common::Verdict& verdict) = 0;
};

class DtcSink {
public:
    virtual ~DtcSink() = default;
    /// `mayBelongToEarlier`: see qorcontrol::Outcome.
    virtual void take(std::vector<QorControlFacade::DtcDescription> dtcs,
                      bool mayBelongToEarlier) = 0;
    /// Some reads in a row have failed, the last one for this.
    virtual void noteSilence(const common::Verdict& verdict) = 0;
};

}  // namespace channel
