#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "qorcontrol/LentQueue.h"
#include "serve/streams/Register.h"
#include "watch/DtcWatch.h"

namespace qorctl::serve {

/// The streams of trouble codes of all clients. The library has one: it reads as often as the one
/// in the greatest hurry wants.
class CodeStreams {
public:
    /// @param later  does something on the thread of the library.
    CodeStreams(const QorControlFacade& facade, Later later);
    /// Lets the library's stream end first, on the thread of the library. What the library may
    /// still be filling stays until the end of the process.
    ~CodeStreams();
    CodeStreams(const CodeStreams&) = delete;
    CodeStreams& operator=(const CodeStreams&) = delete;

    /// They refer to this object.
    Methods methods();

    /// The client's streams. Any thread may call; the library goes on reading until `tidy`.
    void endOf(ClientNumber client) { streams_.removeOf(client); }
    /// Lets the library read as often as is wanted now. On the thread of the library.
    /// False: the library could not be told; `lastOutcome` says why.
    bool tidy();
    std::size_t count() const { return streams_.count(); }

    /// Passes on what has come; of the feeding thread.
    void feed();

private:
    /// How the library is to read; a period of 0: not at all.
    struct Pace {
        unsigned int timeoutMs = 0;
        unsigned int periodMs = 0;
        bool operator!=(const Pace& other) const {
            return timeoutMs != other.timeoutMs || periodMs != other.periodMs;
        }
    };
    struct Stream {
        Pace pace;
        bool isNew = true;  // the feeding thread's
    };

    std::uint64_t start(const nlohmann::json& given, const std::shared_ptr<Client>& client);
    Pace wanted() const;
    void pass(DtcNews::Kind kind);

    const QorControlFacade& facade_;
    const Later later_;
    Pace present_;  // the library thread's
    qorcontrol::LentQueue<CodeList> queue_;
    bool isLent_ = false;  // the library thread's: whether the library ever had it
    Register<Stream> streams_{10};
    DtcNews news_;  // the feeding thread's
};

}  // namespace qorctl::serve
