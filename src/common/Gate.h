#pragma once

namespace common {

/// Something that happens once and is awaited by any number of threads: closed until it is opened,
/// open for good from then on.
class Gate {
public:
    Gate() noexcept;
    ~Gate();
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    /// False where the system could not create it: it then never opens, and waits return at once.
    bool exists() const noexcept { return handle_ != nullptr; }
    void open() noexcept;

    /// Waits at most `timeoutMs` (0xFFFFFFFF: without limit); whether it is open.
    bool await(unsigned int timeoutMs) const noexcept;

private:
    void* handle_;
};

}  // namespace common
