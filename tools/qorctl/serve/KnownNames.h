#pragma once

#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "serve/Method.h"

namespace qorctl::serve {

/// The parameters that clients can be told of: QOR has no list of them, so these are those that
/// were listed for the server and those that requests have been successful with. Its operations
/// may be called from every thread.
class KnownNames {
public:
    KnownNames() = default;
    KnownNames(const KnownNames&) = delete;
    KnownNames& operator=(const KnownNames&) = delete;

    /// They refer to this object.
    Methods methods();

    /// In the ANSI code page.
    void add(const std::vector<std::string>& names);
    /// What a successful request of that method tells. Both in UTF-8.
    void learn(const Method& method, const nlohmann::json& given, const nlohmann::json& result);

private:
    void addOne(const std::string& name);
    nlohmann::json all() const;

    mutable std::mutex mutex_;
    std::map<std::string, nlohmann::json> descriptions_;  // guarded by mutex_; null: none known
};

}  // namespace qorctl::serve
