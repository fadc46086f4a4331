#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "qorcontrol/Export.h"
#include "qorcontrol/HostInterfaces.h"
#include "qorcontrol/Layout.h"
#include "qorcontrol/ParamDescription.h"
#include "qorcontrol/ThreadSafeQueue.h"

/// Remote control of QOR, an ECU calibration and diagnostic application, from a test-station
/// program: launch it, connect an ECU, read and write parameters, switch memory pages, drive
/// actuators, read and clear trouble codes, send KWP requests and CAN frames, stream values.
///
/// **Life.** One object controls one QOR. The constructor returns at once; an agent thread of the
/// library then reads QOR's settings file, starts QOR with it unless it already runs, and carries
/// out all requests, one at a time, in the order in which they were posted. Up to ten can wait; an
/// eleventh pushes the others out, whose callers then wait in vain. If QOR cannot be started the
/// agent thread ends, and every operation fails from then on (the trace says why).
///
/// **Unloading.** Call `shutdown`, or destroy the object, before you free the library (not from a
/// DllMain or a static object of a DLL: no thread can end meanwhile). It then goes at once; unless
/// a busy thread of it had to be let go, which took about 5 s: then `FreeLibrary` returns all the
/// same, and the library stays loaded until that thread has ended. Without a shutdown it stays for
/// good, unless the agent has ended by itself.
///
/// **QOR comes and goes.** It may be restarted while an object lives, or the connection to it be
/// lost and made anew: then, as after `openModel`, all that was learnt about its parameters is
/// forgotten and asked for again, and streams go on by themselves once the host has connected the
/// ECU. A request that is under way at that moment fails.
///
/// **Threads.** Any number of host threads may call the operations at once; each waits for its
/// own answer. `connect` (with a monitor) and `setEcuSegment` dispatch the calling thread's window
/// messages while they wait, so a user-interface thread may call them; all other waiting
/// operations block without dispatching. Construction and destruction are the owner's.
///
/// **Time-outs** are unsigned milliseconds. An operation that reads gives QOR its `timeoutMs`, one
/// that writes 400 ms to know the name and 500 ms to take the value. Each waits twice its
/// `timeoutMs` for the agent, which may still be busy with another request; `clearDtc` does not
/// double its argument, `getParamDescription` waits 3000 ms whatever happens. Special values, none
/// of much use: 0 waits for nothing and practically always fails, though writes are carried out;
/// 0x80000000 doubles to 0; 0xFFFFFFFE gives QOR the transport's default of 2000 ms to take the
/// request, but none for data that it sends afterwards; 0xFFFFFFFF is not doubled and waits without
/// limit (over TCP QOR then has next to no time to take the request and, once it has, no limit for
/// the data: one that sends none blocks the agent for good).
///
/// **False** means that it did not work, never more: the agent thread has ended (checked first,
/// without a log line), QOR did not answer in time, or QOR refused. Timed operations leave a line
/// in the trace with the elapsed milliseconds; `connect`, `setEcuSegment`, `openModel`,
/// `connectCanBus` and the streams leave none. The host's log gets a line beginning with "FAILED"
/// for the reads and writes of values, direct control, KWP and CAN; not for `pingQor`,
/// `getParamDescription` and the trouble codes. Unless an operation says otherwise, its output
/// arguments are unchanged on failure. A request whose caller has given up is not begun any more;
/// what had left for QOR by then may still be carried out.
///
/// **Exceptions.** None but std::bad_alloc leaves an operation.
///
/// **Texts** are narrow strings in the process's ANSI code page; paths too.
///
/// **Ownership.** The library keeps only pointers to the log, the monitor and the streaming
/// queues. The log must outlive the object and every operation that still runs, the monitor the
/// `connect` that it was given to. A queue must stay alive after its stop operation until a
/// `pingQor` that was called after the stop has returned true: before, the agent may still be about
/// to fill it. If `shutdown` had to let a busy agent go (it then took about 5 s), monitor and
/// queues must live as long as the process, and so must the module that holds their code.
///
/// **Build.** The interface passes standard strings, vectors and maps, so the host must be a
/// 32-bit program built with the same compiler and standard library as the library, both linked
/// to the shared run-time libraries (libstdc++-6, libgcc_s_dw2-1, libwinpthread-1): with a static
/// copy on either side an exception cannot cross. Enumerations are 32 bits wide, flags one byte,
/// records are packed as the compiler does by default.
///
/// **One per process.** Trace, answer tables and model export files are shared by all objects of
/// a process, and over window messages the second object's window could not be told from the
/// first one's.
class QOR_API QorControlFacade {
public:
    /// How to reach the ECU. Fields without a comment are QOR's own and travel unchanged; the
    /// value after "QOR:" is what QOR itself would use.
    struct EcuConnect {
        /// What to connect through; beside `connect` and `connectCanBus`.
        enum ConnType : int {
            Default = 1,         ///< connection mode 0; bus mode 0
            SecurityAccess = 2,  ///< connection mode 0x30, `securityDll` is passed; bus mode 0
            Alternative = 3      ///< connection mode 1; bus mode 1
        };

        unsigned int protocol;  ///< 1 to 4; any other value is taken as 1
        unsigned int protocolOption;
        bool optionFlag;               ///< QOR: true
        unsigned int kLineBaudRate;    ///< bit/s; QOR: 10400
        unsigned int canBaudRate;      ///< bit/s; QOR: 125000
        unsigned int refreshPeriodMs;  ///< see `getParamData` and `startParamRead`
        unsigned int canRequestId;     ///< QOR: 0xFFFFFFFF, none
        unsigned int canResponseId;    ///< QOR: 0xFFFFFFFF, none
        unsigned char addressByte1;    ///< QOR: 0xFF
        unsigned char addressByte2;    ///< QOR: 0xFF
        unsigned int addressWord;      ///< QOR: 255
        bool extraFlag;                ///< QOR: true
        /// Path of the ECU's security-access library, absolute or relative to the host's
        /// executable; passed on for `SecurityAccess` only.
        std::string securityDll;
        bool finalFlag;  ///< QOR: true
    };

    /// How to open the CAN bus.
    struct CanBusConnect {
        unsigned int busParam;  ///< bus setting, a bit rate
        bool firstFlag;
        bool secondFlag;
    };

    /// CAN identifiers and their values.
    struct CanBusData {
        struct Item {
            unsigned int canId;
            int value;
        };
        std::vector<Item> items;
    };

    /// One diagnostic trouble code, as QOR tells it.
    struct DtcDescription {
        unsigned int code;
        unsigned int status;
        std::string text1;
        std::string text2;
        std::string text3;
        std::string text4;
    };

    /// One KWP exchange, used both ways.
    struct KwpCommand {
        unsigned int service;  ///< service identifier
        std::string data;      ///< raw bytes of the request, then of the answer; zeros allowed
        unsigned char failed;  ///< out: not 0 if QOR reports the exchange as failed
    };

    /// The files of a model.
    struct ModelDescription {
        unsigned int modelType;  ///< 1 to 5; 6 is taken as 2, any other value as 1
        std::string model;       ///< path of the model file
        unsigned int modelOption;
        std::string hex;  ///< path of the data file; used only when not empty
        unsigned int hexOption;
        std::string csv;  ///< path of the second data file; used only when not empty
        unsigned int csvOption;
        std::map<std::string, std::string> extra;  ///< further entries for QOR
    };

    /// One streamed value.
    struct ParamValue {
        std::string name;            ///< as registered
        std::vector<double> values;  ///< exactly one element: the current value
    };

    /// @name Life
    /// @{

    /// @param settingsPath  QOR's settings file; absolute with a drive letter, or relative to the
    ///                      host's executable.
    /// @param eolLog        the host's log, or null; not owned.
    /// @param readPeriodMs  the refresh period until the first connect brings its own.
    /// @param hostPath      the host's executable. The trace settings are read from the file of
    ///                      that name with the extension ".cfg", and the trace goes to the one
    ///                      with ".log". Empty: neither.
    QorControlFacade(const std::string& settingsPath, const EolLog* eolLog,
                     unsigned int readPeriodMs, const std::string& hostPath);

    /// Calls `shutdown`. An operation that another thread still waits in ends by its time-out.
    ~QorControlFacade();

    QorControlFacade(const QorControlFacade&) = delete;
    QorControlFacade& operator=(const QorControlFacade&) = delete;

    /// Lets the agent finish its step, disconnect the ECU and shut QOR down; waits at most about
    /// 5 s for it and then lets it go. A second call does nothing; any thread may call.
    void shutdown();

    /// @}
    /// @name State, asked without a request to QOR
    /// @{

    /// Whether QOR reported an ECU online within the last 2 s. During a monitored connect it
    /// stays true for 17 s after every progress step, so that a slow connect does not look like a
    /// lost ECU.
    bool isEcuOnline() const;

    /// True while a `connect` with a monitor waits.
    bool isConnecting() const;

    /// The path of QOR's executable. Until the settings are read it waits, at most 3000 ms, busily
    /// and dispatching copy-data messages; where the settings name none or could not be read, each
    /// call takes those 3000 ms and returns an empty text.
    std::string getQorExecutablePath();

    /// The segment names for `setEcuSegment`: the working page in RAM ...
    static const std::string& getEdcRamSegmentName();
    /// ... and the reference page in ROM.
    static const std::string& getEdcRomSegmentName();

    /// @}
    /// @name The connection
    /// @{

    /// Connects the ECU. With a monitor it returns when the ECU is online or the attempt has
    /// failed (the reason goes to the monitor). QOR has 10 s to take the request and no limit for
    /// the connecting, but the monitor can cancel; the ECU then has 15 s to come online. Without a
    /// monitor it returns true at once and the connect goes on in the background: `isEcuOnline`
    /// tells how it ended.
    bool connect(const EcuConnect& settings, EcuConnect::ConnType type,
                 IProgressMonitor* monitor) const;

    /// Whether QOR answers.
    bool pingQor(unsigned int timeoutMs) const;

    /// Selects the memory page to work on, one of the two segment names. There is no time limit.
    /// `monitor` may be null; nothing is reported to it.
    bool setEcuSegment(const std::string& segment, bool flag, IProgressMonitor* monitor) const;

    /// Lets QOR end its work with the ECU and open a model; true as soon as that is posted.
    /// Once the agent has begun, `isEcuOnline` is false until QOR reports an ECU again. What QOR
    /// exports of the model stands afterwards in "c:\qor_exp.sde" and "c:\qor_exp_add.sde".
    bool openModel(const ModelDescription& model) const;

    /// Opens the CAN bus; true as soon as that is posted.
    bool connectCanBus(const CanBusConnect& settings, EcuConnect::ConnType type) const;

    /// @}
    /// @name Parameters
    /// @{

    /// Describes a parameter; 3000 ms at most. `desc.name` is set to `name` even on failure.
    bool getParamDescription(const std::string& name, wex::ParamDescription& desc) const;

    /// Reads a parameter: its values, and for a parameter of three arrays its two further ones
    /// (otherwise empty). Values read, written or streamed less than half a refresh period ago
    /// are returned at once, without asking QOR and without a log line, unless QOR has become
    /// another one since, or has opened another model. (A streamed value is one number: of a
    /// parameter that is being streamed the two further arrays then are empty.)
    bool getParamData(const std::string& name, std::vector<double>& values,
                      std::vector<double>& second, std::vector<double>& third,
                      unsigned int timeoutMs) const;

    /// The same, for the first array alone.
    bool getParamData(const std::string& name, std::vector<double>& values,
                      unsigned int timeoutMs) const;

    /// Reads a parameter whose values are character codes: each is truncated toward zero and cut
    /// to its low 8 bits. There is no terminator.
    bool getParamDataAsString(const std::string& name, std::string& text,
                              unsigned int timeoutMs) const;

    /// Writes a parameter; the further arrays are used only for a parameter of three arrays. For
    /// half a refresh period `getParamData` then returns what was written. More than one record of
    /// 128 MiB can hold (16,777,212 values of one array) is refused at once, like everything so
    /// long.
    bool setParamData(const std::string& name, const std::vector<double>& values,
                      const std::vector<double>& second, const std::vector<double>& third,
                      unsigned int timeoutMs) const;

    /// Writes a value as text, in QOR's own notation. The value cache is not touched. QOR is given
    /// 500 ms whatever `timeoutMs` says.
    bool setDynamicData(const std::string& name, const std::string& value,
                        unsigned int timeoutMs) const;

    /// Takes an actuator under direct control ...
    bool startDirectCtrl(const std::string& name, unsigned int timeoutMs) const;
    /// ... and gives it back. QOR is given 500 ms, as for a write.
    bool stopDirectCtrl(const std::string& name, unsigned int timeoutMs) const;

    /// Reads several parameters in one exchange, past the cache: one array per name, in the order
    /// of the names; an array may be empty.
    bool getParamDataAtOnce(const std::vector<std::string>& names,
                            std::vector<std::vector<double>>& values, unsigned int timeoutMs) const;

    /// @}
    /// @name Diagnostics
    /// @{

    /// Clears the trouble codes. Waits exactly `timeoutMs`; QOR is given 400 ms.
    bool clearDtc(unsigned int timeoutMs) const;

    /// Reads the trouble codes.
    bool getDtcByStatus(std::vector<DtcDescription>& dtcs, unsigned int timeoutMs) const;

    /// Sends a KWP request. True says that the exchange took place: `data` is then the answer and
    /// `failed` the ECU's verdict. Works only after a `connect`.
    bool sendKwpCommand(KwpCommand& kwp, unsigned int timeoutMs) const;

    /// Reads the values of the CAN identifiers in `data`, which is replaced by QOR's answer.
    bool getCanBusData(CanBusData& data, unsigned int timeoutMs) const;

    /// Sends a CAN message; the two numbers and the bytes are QOR's and travel unchanged.
    bool sendCanBusMsg(unsigned int first, unsigned int second, const std::string& message,
                       unsigned int timeoutMs) const;

    /// @}

    /// @name Streams into the host's own queues
    /// @{

    /// Fills `queue` with the current values of these parameters: a vector of those that are
    /// fresh, again and again while QOR sends them. A value is fresh for three refresh periods
    /// after its arrival; a parameter that stalls disappears from the vectors. Registering the
    /// same queue again replaces its names; wait for two vectors of the old ones first, because a
    /// change in the very round in which the agent begins with them is lost. Works at any time and
    /// is always true; the values flow once QOR has an ECU online. A queue that is full loses
    /// values, see ThreadSafeQueue. A null queue is ignored.
    bool startParamRead(ThreadSafeQueue<std::vector<ParamValue>>* queue,
                        const std::vector<std::string>& names) const;

    /// Ends that. See "Ownership" above for how long the queue must stay alive.
    bool stopParamRead(ThreadSafeQueue<std::vector<ParamValue>>* queue) const;

    /// Fills `queue` with the list of trouble codes, read every `periodMs` and given `timeoutMs`
    /// each time. After four failed reads in a row it gets a vector of one empty entry. There is
    /// one such stream: a second call redirects it, a null queue ends it.
    bool startDtcRead(ThreadSafeQueue<std::vector<DtcDescription>>* queue, unsigned int timeoutMs,
                      unsigned int periodMs) const;

    /// Ends that.
    bool stopDtcRead() const;

    /// @}

private:
    class Impl;
    friend struct FacadeAccess;

    // Exported with the class, but called by nobody: an operation asks through a share of its own.
    bool isOperating() const;
    bool protectedMessagePump() const;
    static unsigned int __stdcall agentThread(void* share);

    Impl* impl_ = nullptr;
};

static_assert(qorcontrol::Layout<QorControlFacade>::isThatOfTheLibrary,
              "the library was built with another compiler, standard library or packing");
