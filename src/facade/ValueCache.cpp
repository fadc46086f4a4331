#include "facade/ValueCache.h"

#include <utility>

#include "common/Clock.h"

namespace valuecache {

bool find(QorControlFacade::Impl& impl, const std::string& name, std::vector<double>& values,
          std::vector<double>& second, std::vector<double>& third) {
    const common::LockGuard guard(impl.stateLock);
    const auto found = impl.paramValueCache.find(name);
    if (found == impl.paramValueCache.end()) return false;
    const auto& cached = found->second;
    if (cached.stamp <= impl.cacheBegin) return false;
    const common::Moment end = cached.stamp + impl.readPeriodMs / 2;
    if (common::now() >= end) return false;
    values = cached.values;
    second = cached.second;
    third = cached.third;
    return true;
}

void store(QorControlFacade::Impl& impl, const std::string& name,
           QorControlFacade::Impl::CachedValue value) {
    const common::LockGuard guard(impl.stateLock);
    impl.paramValueCache[name] = std::move(value);
}

}  // namespace valuecache
