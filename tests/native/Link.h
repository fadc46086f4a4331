#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

/// A connection between the TCP worker and a faked QOR of the same process: two streams of bytes.
/// Each end may be used by a thread of its own.
class Link {
public:
    class Stream {
    public:
        struct State {
            std::size_t bytes;
            bool isAccepted;
            bool isClosed;
            bool isBroken;  // closed, and what was not read is lost
        };

        void append(const std::string& bytes) {
            change([&] { bytes_ += bytes; });
        }
        std::string takeAll() {
            std::string taken;
            change([&] { taken.swap(bytes_); });
            return taken;
        }
        std::string take(std::size_t most) {
            std::string taken;
            change([&] {
                taken = bytes_.substr(0, most);
                bytes_.erase(0, taken.size());
            });
            return taken;
        }
        void accept() {
            change([&] { state_.isAccepted = true; });
        }
        void close() {
            change([&] { state_.isClosed = true; });
        }
        void breakOff() {
            change([&] {
                bytes_.clear();
                state_.isClosed = state_.isBroken = true;
            });
        }
        bool isClosed() const { return state().isClosed; }
        State state() const {
            const std::lock_guard<std::mutex> guard(mutex_);
            State present = state_;
            present.bytes = bytes_.size();
            return present;
        }

        /// `look` is called behind each change, by whoever has made it, without the lock.
        void observe(std::function<void()> look) {
            const std::lock_guard<std::mutex> guard(mutex_);
            look_ = std::move(look);
        }

    private:
        template <class Change>
        void change(Change apply) {
            std::function<void()> look;
            {
                const std::lock_guard<std::mutex> guard(mutex_);
                apply();
                look = look_;
            }
            if (look != nullptr) look();
        }

        mutable std::mutex mutex_;
        std::string bytes_;
        State state_{};
        std::function<void()> look_;
    };

    Stream toQor;
    Stream toLibrary;
};

/// Where the faked QORs of the process listen, each under a name that stands for host and port.
namespace links {

/// A second name replaces nothing: it must not be in use.
void listen(const std::string& name);
/// A connection that waits there is refused.
void stopListening(const std::string& name);

/// The connection that the library has asked for; null if there is none waiting.
std::shared_ptr<Link> accept(const std::string& name);

/// Null if nobody listens.
std::shared_ptr<Link> connect(const std::string& name);

}  // namespace links
