#pragma once

#include <cstdint>
#include <string>

namespace qorctl::serve {

/// A file that another one writes meanwhile, looked at once.
class GrowingFile {
public:
    /// What cannot be opened is empty.
    explicit GrowingFile(const std::string& path);
    ~GrowingFile();
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;

    std::int64_t size() const;
    /// At most that much from there on.
    std::string read(std::int64_t position, std::int64_t bytes) const;

private:
    void* const handle_;
};

}  // namespace qorctl::serve
