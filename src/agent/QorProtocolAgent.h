#pragma once

#include <memory>
#include <string>
#include <vector>

#include "client/ClientExternalOperating.h"
#include "common/Moment.h"
#include "facade/FacadeImpl.h"

/// The library's one worker on QOR: owns the client, carries out the facade's requests one at a
/// time and keeps the time of QOR's last answer fresh. Everything happens on the agent thread.
class QorProtocolAgent {
public:
    using Impl = QorControlFacade::Impl;

    explicit QorProtocolAgent(std::shared_ptr<Impl> impl);

    /// With a client of the caller's making, already launched; for tests.
    QorProtocolAgent(std::shared_ptr<Impl> impl, std::unique_ptr<ClientExternalOperating> client);

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
    using Handler = bool (QorProtocolAgent::*)(const Impl::ProtocolCmd&);
    struct Route;
    static const Route routes[];

    void noteOnlineState();
    void noteEpoch();
    Handler handlerOf(std::uint32_t kind) const;
    bool handle(const Impl::ProtocolCmd& command);
    void carryOut(const Impl::ProtocolCmd& command);

    bool performConnect(const Impl::ProtocolCmd& command);
    bool ping(const Impl::ProtocolCmd& command);
    bool readDescription(const Impl::ProtocolCmd& command);
    bool readParam(const Impl::ProtocolCmd& command);
    bool writeParam(const Impl::ProtocolCmd& command);
    bool setDynamic(const Impl::ProtocolCmd& command);
    bool controlParam(const Impl::ProtocolCmd& command);
    bool readTogether(const Impl::ProtocolCmd& command);
    bool openModel(const Impl::ProtocolCmd& command);
    bool selectSegment(const Impl::ProtocolCmd& command);
    bool clearDtc(const Impl::ProtocolCmd& command);
    bool readDtc(const Impl::ProtocolCmd& command);
    bool sendKwp(const Impl::ProtocolCmd& command);
    bool connectCanBus(const Impl::ProtocolCmd& command);
    bool readCanBus(const Impl::ProtocolCmd& command);
    bool sendCanBus(const Impl::ProtocolCmd& command);
    bool setDtcStream(const Impl::ProtocolCmd& command);
    bool stopParamStream(const Impl::ProtocolCmd& command);

    // One step each of the streams, in rounds without a request.
    void streamParams();
    /// Notes how the preparation of a registration ended; false if the host has ended it meanwhile,
    /// which it may at any time.
    bool writeBack(Impl::ParamQueue* queue, bool isPrepared, Epoch epoch);
    void fillQueue(Impl::ParamQueue& queue, const std::vector<std::string>& names);
    bool isFresh(common::Moment arrivalTick);
    void streamDtcs();
    bool readDtcsFor(Impl::DtcQueue& queue);
    bool hasQorAnsweredLately() const;

    std::shared_ptr<Impl> impl_;
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

    // The one stream of trouble codes; a null queue means none.
    Impl::DtcQueue* dtcQueue_ = nullptr;
    std::uint32_t dtcStatusMask_ = 0;  // in truth the time-out of a read, see CmdDataDtc
    std::uint32_t dtcPeriodMs_ = 0;
    common::Moment dtcNextTick_;  // never: the next read is due
    std::uint32_t dtcFailures_ = 0;
};
