#pragma once

namespace torture {

/// What a host does by itself, to the end of the block: nothing of it fails.
class HostsOwn {
public:
    HostsOwn() noexcept;
    ~HostsOwn();
    HostsOwn(const HostsOwn&) = delete;
    HostsOwn& operator=(const HostsOwn&) = delete;

private:
    [[maybe_unused]] const bool before_;
};

/// Whatever `make` makes.
template <class Make>
auto hostsOwn(Make make) {
    const HostsOwn own;
    return make();
}

}  // namespace torture
