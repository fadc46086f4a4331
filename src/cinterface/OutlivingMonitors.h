#pragma once

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "common/Guarded.h"
#include "facade/channel/Channel.h"
#include "qorcontrol/HostInterfaces.h"

namespace cinterface {

/// Monitors of connects whose agent had to be let go: it may ask them as long as it runs, and holds
/// its share of the channel as long.
class OutlivingMonitors {
public:
    void add(const std::shared_ptr<channel::Channel>& channel,
             std::shared_ptr<IProgressMonitor> monitor) {
        const auto entries = entries_.lock();
        entries->erase(std::remove_if(entries->begin(), entries->end(),
                                      [](const Entry& entry) { return entry.channel.expired(); }),
                       entries->end());
        entries->push_back({channel, std::move(monitor)});
    }

private:
    struct Entry {
        std::weak_ptr<channel::Channel> channel;
        std::shared_ptr<IProgressMonitor> monitor;
    };

    common::Guarded<std::vector<Entry>> entries_;
};

}  // namespace cinterface
