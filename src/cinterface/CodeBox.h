#pragma once

#include <vector>

#include "common/Awaited.h"
#include "common/Moment.h"
#include "facade/channel/StreamSinks.h"

namespace cinterface {

/// The newest list of trouble codes that the reader has not got yet.
class CodeBox final : public channel::DtcSink {
public:
    using Codes = std::vector<QorControlFacade::DtcDescription>;

    void take(Codes codes, bool mayBelongToEarlier) override;
    void noteSilence(const common::Verdict& verdict) override;

    enum class Found { nothing, codes, silence, closed };
    /// What a read has found, with its list.
    struct Read {
        Found found = Found::nothing;
        Codes codes;
        bool mayBelongToEarlier = false;  ///< the list
        common::Verdict silence;          ///< why there was none
        common::Moment arrival;
        unsigned int missed = 0;  ///< so many lists no reader has got, in all
    };
    Read read(unsigned int timeoutMs);

    /// Sends away who waits.
    void close();

private:
    struct Content {
        Read next;
        bool closed = false;
    };

    common::Awaited<Content> content_;
};

}  // namespace cinterface
