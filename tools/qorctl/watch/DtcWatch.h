#pragma once

#include <string>
#include <vector>

#include "CallNotes.h"
#include "Conversation.h"
#include "QorControlFacade.h"

namespace qorctl {

using CodeList = std::vector<QorControlFacade::DtcDescription>;

/// Tells apart what comes out of a stream of trouble codes: lists that have changed are news, and
/// so is the marker that reading has failed four times in a row.
class DtcNews {
public:
    enum class Kind { none, codes, failure };

    /// What `list` is after those before it.
    Kind take(const CodeList& list);

    /// The list that was read last.
    const CodeList& codes() const { return codes_; }
    unsigned int lists() const { return lists_; }
    unsigned int failures() const { return failures_; }
    bool isFailing() const { return last_ == Kind::failure; }

private:
    CodeList codes_;
    Kind last_ = Kind::none;
    unsigned int lists_ = 0;
    unsigned int failures_ = 0;
};

/// Watches the trouble codes in a running conversation with a connected ECU, as a step of it.
class DtcWatch {
public:
    struct Options {
        unsigned int periodMs = 1000;
        double forS = 0;  ///< 0: until Ctrl-C
        bool json = false;
    };

    DtcWatch(Conversation& conversation, const Options& options)
        : conversation_(conversation), options_(options) {}

    void run();

private:
    Outcome stream();
    void show(DtcNews::Kind kind, double nowS) const;
    Outcome judge(bool stopIsSeen, const CallNotes& calls, double elapsedS);

    Conversation& conversation_;
    const Options options_;
    DtcNews news_;
};

}  // namespace qorctl
