#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "client/Loans.h"
#include "client/Owed.h"
#include "client/ParamTables.h"
#include "protocol/Records.h"
#include "qorcontrol/Cause.h"

/// One answer that is not kept by a key: whether it is waited for, whether it has come, and what
/// it carried. One that nobody waits for is not kept at all.
template <class T>
struct Arrival {
    bool expected = false;
    bool arrived = false;
    T content;
};

/// The answers that QOR gives without a key, for the count of what it owes.
enum class Answer { troubleCodes, canValues, kwp };

/// The id of the request that a record of QOR's names as the one that it answers; not every record
/// does.
using Answered = std::optional<std::uint32_t>;

/// The request whose data is awaited, and what has come in place of it.
struct Asked {
    std::uint32_t requestId = 0;
    std::uint32_t commandId = 0;
    std::shared_ptr<ILoan> loan;  ///< null: there is no such request
    qorcontrol::Cause trouble = qorcontrol::Cause::none;
    const char* detail = "";
    bool isTroubleCertain = false;  ///< it has named this request

    /// Whether a record may answer this request: by the id that it names or, if it names none, by
    /// its kind.
    bool mayBeAnsweredBy(std::uint32_t kind, const Answered& answered) const {
        return loan != nullptr && (answered ? *answered == requestId : kind == commandId);
    }
    void note(qorcontrol::Cause cause, const char* what, bool isCertain) {
        trouble = cause;
        detail = what;
        isTroubleCertain = isCertain;
    }
};

/// The time for which QOR's parameter indices hold: another QOR, or another model in it, begins
/// the next epoch.
using Epoch = std::uint32_t;

/// Everything in the client that both its own thread and the receiving side touch; reachable only
/// under the client's lock.
struct ClientState {
    // The connection.
    bool ecuOnline = false;
    common::Moment lastOnlineQuery;
    protocol::KwpConnect connectRecord;
    bool connecting = false;  ///< from a connect, also a failed one, to the next disconnect
    std::int32_t bootstrapProgress = -1;
    std::int32_t bootstrapFigure = -1;          ///< the last one; unlike the progress it stays
    std::uint32_t bootstrapSteps = 0;           ///< so many figures have come, in all connects
    std::deque<std::int32_t> bootstrapResults;  ///< oldest first

    // What QOR has told.
    Epoch epoch = 0;
    ParamTables params;
    Arrival<std::vector<protocol::DtcRecord>> dtcs;
    Arrival<std::vector<protocol::CanBusItem>> canFrames;
    Arrival<protocol::ExecKwp> kwpAnswer;

    // What QOR has been asked for and has not told since; parameters, by name or index, of this
    // epoch only.
    Owed<Answer> owedAnswers;
    Owed<std::string> owedDescriptions;
    Owed<std::int32_t> owedValues;   ///< by a read of one or of several
    Owed<std::int32_t> owedSamples;  ///< the three arrays
    Loans loans;
    Asked asked;
};
