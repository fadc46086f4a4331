#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/Interest.h"
#include "common/Lock.h"
#include "common/Moment.h"
#include "common/Thread.h"
#include "common/ThreadSafeQueue.h"
#include "facade/QorControlFacade.h"

/// What the facade and its agent thread share: the queue of requests, the values last read, the
/// streams, and the few facts about QOR that the host may ask for.
///
/// The facade, the agent thread and every running operation hold a count on it, so that an
/// abandoned agent or an operation that outlives the facade never touches freed memory.
class QorControlFacade::Impl : public std::enable_shared_from_this<Impl> {
public:
    /// The request kinds. The numbers are fixed; all others are answered as failures.
    enum Kind : std::uint32_t {
        kindOpenModel = 2,
        kindConnect = 3,
        kindGetParamDescription = 4,
        kindGetParamData = 5,
        kindSetParamData = 6,
        kindStartDtcRead = 7,
        kindStopDtcRead = 8,
        kindClearDtc = 9,
        kindSetEcuSegment = 16,
        kindStopParamRead = 17,
        kindGetDtcByStatus = 18,
        kindSendKwpCommand = 20,
        kindConnectCanBus = 21,
        kindGetCanBusData = 22,
        kindGetParamDataAtOnce = 23,
        kindSetDynamicData = 24,
        kindPingQor = 25,
        kindSendCanBusMsg = 32,
        kindStartDirectCtrl = 33,
        kindStopDirectCtrl = 34
    };

    /// A request's payload; its concrete type (CmdData.h) goes with the kind and is checked by
    /// whoever takes it.
    struct CmdData {
        virtual ~CmdData() = default;
    };
    struct CmdDataPing;
    struct CmdDataConnect;
    struct CmdDataParamInfo;
    struct CmdDataParamData;
    struct CmdParamDataAtOnce;
    struct CmdDataSegment;
    struct CmdDataModel;
    struct CmdDataDtc;
    struct CmdDataDtcData;
    struct CmdDataKwp;
    struct CmdCanBusConn;
    struct CmdCanBusSend;
    struct CmdCanBusData;
    struct CmdRepeatRead;

    /// The agent's answer to one request.
    struct CmdResponse {
        static constexpr std::uint32_t failure = 0;
        static constexpr std::uint32_t success = 1;

        std::uint32_t result = failure;
        /// Of the request's type; null where the request's own payload carries the results, or
        /// where there are none.
        std::shared_ptr<CmdData> data;
    };

    /// Where a caller waits for the answer to its request. The agent shares it: a caller that
    /// gives up leaves it to whoever still holds the request, and uses another one from then on.
    class AnswerQueue final : public ThreadSafeQueue<CmdResponse>, public common::Interest {
    public:
        using ThreadSafeQueue::ThreadSafeQueue;
    };

    /// One request from the facade to the agent.
    struct ProtocolCmd {
        std::uint32_t kind = 0;
        std::shared_ptr<CmdData> data;
        std::shared_ptr<AnswerQueue> replyQueue;  ///< null: no answer is wanted
        IProgressMonitor* monitor = nullptr;      ///< the host's; not owned
    };

    /// The last values of a parameter and when they were had.
    struct CachedValue {
        std::vector<double> values;
        std::vector<double> second;
        std::vector<double> third;
        common::Moment stamp;
    };

    using ParamQueue = ThreadSafeQueue<std::vector<ParamValue>>;
    using DtcQueue = ThreadSafeQueue<std::vector<DtcDescription>>;

    /// What one host queue is to be filled with.
    struct RepeatRead {
        std::vector<std::string> names;
        bool prepared = false;    ///< the agent has set QOR up to send these
        std::uint32_t epoch = 0;  ///< which QOR that was, in the agent's count
    };

    static constexpr unsigned int commandSlots = 10;

    Impl(std::string settings, const EolLog* log, unsigned int periodMs)
        : settingsPath(std::move(settings)),
          eolLog(log),
          commandQueue(commandSlots),
          readPeriodMs(periodMs) {}

    bool isEcuOnline();

    /// Whether the agent thread still works: it has not noted its end, and the system says so too
    /// (a thread can end without returning).
    bool isOperating() const;

    /// The same without asking the system, which costs more than a look into the value cache.
    bool mayBeOperating() const { return agentThread.isRunning() && !agentEnded; }

    /// Takes at most one message of any kind from the calling thread's queue and dispatches it;
    /// then whether the agent thread still works, by the system's own word.
    bool protectedMessagePump() const;

    // Constant from construction.
    const std::string settingsPath;
    const EolLog* const eolLog;

    // Locks itself.
    ThreadSafeQueue<ProtocolCmd> commandQueue;

    // Written by the facade's owner; readable by all without a lock.
    common::Thread agentThread;
    std::atomic<bool> agentRunning{true};

    // Set by the agent thread when it has failed: from then on it only clears up.
    std::atomic<bool> agentEnded{false};

    // Guarded by stateLock, except where a comment says otherwise. The lock is held for copying
    // and looking at the clock, never across a call into another folder.
    common::Lock stateLock;
    // Also written without the lock, by the progress of a connect.
    std::atomic<common::Moment> lastQorContactTick{common::Moment()};
    std::map<std::string, CachedValue> paramValueCache;
    common::Moment cacheBegin;  // entries that are not younger are another QOR's or model's
    std::uint32_t readPeriodMs;
    std::string qorExecutablePath;
    std::atomic<bool> connecting{false};  // no lock: set and cleared by the facade's connect
    std::map<ParamQueue*, RepeatRead> repeatReads;

    // The facade's own count; the facade drops it at its end.
    std::shared_ptr<Impl> facadeCount;

    std::atomic<bool> shuttingDown{false};  // one shutdown at a time
};
