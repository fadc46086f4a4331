#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "agent/Request.h"
#include "client/ClientExternalOperating.h"
#include "common/Moment.h"
#include "facade/channel/Channel.h"

/// The library's one worker on QOR: owns the client, carries out the facade's requests one at a
/// time and keeps the time of QOR's last answer fresh. Everything happens on the agent thread.
class QorProtocolAgent {
public:
    using Channel = channel::Channel;

    explicit QorProtocolAgent(std::shared_ptr<Channel> channel);

    /// With a client of the caller's making, already launched; for tests.
    QorProtocolAgent(std::shared_ptr<Channel> channel,
                     std::unique_ptr<ClientExternalOperating> client);

    /// Makes the client from the facade's settings file, publishes the path of QOR's executable
    /// and launches QOR. Throws std::runtime_error if one of that fails; a client that was made
    /// then lives until this object ends.
    void start();

    /// One round: look after the online state, dispatch the thread's copy-data messages, carry
    /// out at most one request; waits at most 1 ms for one, and without one feeds the streams. A
    /// request that fails, for whatever reason, is answered as a failure; one that succeeds has
    /// been answered by its handler. One whose caller has given up meanwhile is not begun.
    void step();

    /// Ends the work with QOR: disconnects the ECU and shuts QOR down, if the settings name an
    /// executable.
    void finish();

private:
    template <class Data>
    using Handler = bool (QorProtocolAgent::*)(const Request<Data>&);

    [[noreturn]] void failToLaunch();
    void noteOnlineState();
    void noteEpoch();
    void carryOut(const channel::ProtocolCmd& command);
    bool handle(const channel::ProtocolCmd& command);
    template <class Data>
    bool pass(const channel::ProtocolCmd& command, Handler<Data> handler);

    // The handlers, one per row of the table. True: it worked, and the caller has been told.
#define QOR_HANDLER(number, name, payload, wait, handler) \
    bool handler(const Request<channel::payload>& request);
    QOR_OPERATIONS(QOR_HANDLER)
#undef QOR_HANDLER

    // One step each of the streams, in rounds without a request.
    void streamParams();
    void fillQueue(channel::ParamQueue& queue, const std::vector<std::string>& names);
    bool prepare(const channel::RepeatRead& stream, Epoch epoch);
    void feedSink(const channel::RepeatRead& stream, Epoch epoch);
    void forgetCursors(const channel::StreamRegistry::Registrations& registered);
    void streamDtcs();
    bool passOnDtcs();
    /// How a round of reading them has ended; cause `none` if they were passed on.
    common::Verdict readDtcs();
    bool hasQorAnsweredLately() const;
    void directDtcs(const channel::CmdDataDtc& wanted);

    std::shared_ptr<Channel> channel_;
    /// Deletes a client, unless a thread of its transport hangs in a call of the system and may
    /// still use it: such a client is left to the end of the process.
    struct EndClient {
        void operator()(ClientExternalOperating* client) const {
            if (client->stop()) delete client;
        }
    };

    std::unique_ptr<ClientExternalOperating, EndClient> client_;

    Epoch epoch_ = 0;        // as last noted
    bool isQorNew_ = false;  // it has not reported an ECU online since

    // How far each sink is, by its address; new with each preparation.
    std::map<const void*, std::vector<ArrivalCursor>> cursors_;

    // The one stream of trouble codes, into a queue or into a sink; without either there is none.
    channel::DtcQueue* dtcQueue_ = nullptr;
    std::shared_ptr<channel::DtcSink> dtcSink_;
    std::uint32_t dtcStatusMask_ = 0;  // in truth the time-out of a read, see CmdDataDtc
    std::uint32_t dtcPeriodMs_ = 0;
    common::Moment dtcNextTick_;  // never: the next read is due
    std::uint32_t dtcFailures_ = 0;
};
