#pragma once

#include <memory>
#include <mutex>
#include <string>

/// A connection between the TCP worker and a faked QOR of the same process: two streams of bytes.
/// Each end may be used by a thread of its own.
class Link {
public:
    class Stream {
    public:
        void append(const std::string& bytes) {
            const std::lock_guard<std::mutex> guard(mutex_);
            bytes_ += bytes;
        }
        std::string takeAll() {
            std::string taken;
            const std::lock_guard<std::mutex> guard(mutex_);
            taken.swap(bytes_);
            return taken;
        }
        void close() {
            const std::lock_guard<std::mutex> guard(mutex_);
            closed_ = true;
        }
        bool isClosed() const {
            const std::lock_guard<std::mutex> guard(mutex_);
            return closed_;
        }

    private:
        mutable std::mutex mutex_;
        std::string bytes_;
        bool closed_ = false;
    };

    Stream toQor;
    Stream toLibrary;
};

/// Where the faked QORs of the process listen, each under a name that stands for host and port.
namespace links {

/// A second name replaces nothing: it must not be in use.
void listen(const std::string& name);
void stopListening(const std::string& name);

/// The connection that the library has asked for; null if there is none waiting.
std::shared_ptr<Link> accept(const std::string& name);

/// Null if nobody listens.
std::shared_ptr<Link> connect(const std::string& name);

}  // namespace links
