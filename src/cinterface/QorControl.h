#ifndef QOR_CONTROL_H
#define QOR_CONTROL_H

/**
 * @file
 * Remote control of QOR, an ECU calibration and diagnostic application, for hosts of any compiler
 * and language: the C interface of QorControlC.dll, which needs no other file. 32-bit Windows.
 *
 * The first value:
 *
 *     QorHandle qor;
 *     double speed;
 *     unsigned int count;
 *     int cause = QorOpen("C:\\Station\\qor-settings.ini", 100, "", &qor);
 *     if (cause == QOR_OK) cause = QorPingQor(qor, 10000);
 *     if (cause == QOR_OK) cause = QorConnect(qor, 0, QOR_CONNECT_DEFAULT, 60000);
 *     if (cause == QOR_OK) cause = QorGetParamData(qor, "EngineSpeed", 500, &speed, 1, &count);
 *     QorClose(qor);
 *
 * Results. Every function that can fail returns QOR_OK or the cause of the failure, one of the
 * QOR_... numbers below. What QorLast... tell of it belongs to the calling thread, until that
 * thread's next call. A failed call leaves what its arguments point to as it was, but for the
 * size of a result that did not fit, and unless it says otherwise.
 *
 * Sizes. A function that hands out an array or a text takes a buffer, its capacity in elements,
 * and a pointer to an unsigned int that always gets the needed number of elements (texts: bytes
 * with the final zero). A null buffer, whose capacity must be 0, just asks for the size, which is
 * QOR_OK. Any of these pointers may be null if the caller does not want to know.
 * QOR_RESULT_TOO_LARGE says that the buffer is too small: nothing was copied and nothing is lost,
 * the whole result can be had with QorResult... without asking QOR again; what the call tells
 * besides (lengths, verdicts, times) is told all the same.
 *
 * Texts are UTF-8 and end with a zero. QOR and its files know the system's ANSI code page: a text
 * with a character that it does not have is a QOR_BAD_ARGUMENT, never sent in another form, and
 * so is one that is no valid UTF-8. Bytes of KWP, CAN messages and texts of ECUs are passed as
 * they are. Names and paths have at most 65,535 bytes; what is longer, and arrays that no record
 * of 128 MiB can hold, are a QOR_REQUEST_TOO_LARGE, and so are more than 65,535 names or extra
 * keys in one call.
 *
 * Time-outs are in milliseconds and mean what they mean in QorControlFacade.h: QOR gets
 * `timeoutMs`, and the call waits twice as long for the library's agent, which carries out one
 * request at a time. QOR_NO_LIMIT and QOR_TRANSPORT_DEFAULT are of little use.
 *
 * Threads. Every function may be called from every thread, also several at once. Waiting
 * functions block; none dispatches window messages. No callback is needed for anything; those
 * that a host sets are called on threads of the library.
 *
 * Life. A handle is good from QorOpen to QorClose, a stream to its stop or the QorClose of its
 * handle. They are numbers, not addresses: a closed or foreign one is a QOR_BAD_HANDLE. No
 * pointer that was passed is used after the call has returned; but for callbacks, until they are
 * replaced or the handle is closed. Strings that a function returns live as long as the library.
 * Close all handles before you free the library, and not from a DllMain: an open one that controls
 * QOR keeps it loaded. Load it once: each time it is freed four small handles of the system stay
 * with the process.
 *
 * Structures begin with their size in bytes, which the host sets, so that they can grow; any other
 * size is a QOR_BAD_ARGUMENT.
 */

#include "qorcontrol/Version.h"

/* This is C: NOLINTBEGIN(modernize-use-using) */

#if defined(_WIN32)
#define QOR_CALL __cdecl
#else
#define QOR_CALL
#endif

#if defined(_WIN32) && !defined(QOR_BUILDING_C_INTERFACE)
#define QOR_IMPORT __declspec(dllimport)
#else
#define QOR_IMPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** @name Causes
 *  What the functions return. The numbers never change their meaning. */
/** @{ */
#define QOR_OK 0                 /**< it worked */
#define QOR_AGENT_ENDED 1        /**< the agent has ended or could not start QOR */
#define QOR_AGENT_BUSY 2         /**< the agent was at other requests for the whole time */
#define QOR_PUSHED_OUT 3         /**< later requests pushed this one out of the full queue */
#define QOR_NO_CONNECTION 4      /**< QOR's window or port was not to be had */
#define QOR_SILENT 5             /**< QOR did not take the request in time */
#define QOR_NO_DATA 6            /**< QOR took the request, but its data did not come in time */
#define QOR_REFUSED 7            /**< QOR refused the request */
#define QOR_UNKNOWN_NAME 8       /**< QOR knows no parameter of that name */
#define QOR_KWP_BEFORE_CONNECT 9 /**< KWP needs a connect before it */
#define QOR_CANCELLED 10         /**< the host cancelled */
#define QOR_CONNECT_REPORTED 11  /**< QOR reported that the connect failed */
#define QOR_ECU_OFFLINE 12       /**< the ECU did not come online in time */
#define QOR_RESULT_TOO_LARGE 13  /**< the caller's buffer is too small; nothing is lost */
#define QOR_BAD_ARGUMENT 14      /**< null, no text of the code page, out of range */
#define QOR_OUT_OF_MEMORY 15     /**< too little memory */
#define QOR_REQUEST_TOO_LARGE 16 /**< the request does not fit into one record of 128 MiB */
#define QOR_CHANGED 17           /**< QOR became another one, or opened another model, meanwhile */
#define QOR_BAD_ANSWER 18        /**< what QOR answered is not what was asked for */
#define QOR_SYSTEM_FAILURE 19    /**< the system refused something that the library needs */
#define QOR_BAD_HANDLE 20        /**< closed, or never one */
#define QOR_NOT_READY 21         /**< nothing there yet: ask again later */
#define QOR_WRONG_ORDER 22       /**< not now: something else must come first, or must end first */
/** @} */

/** @name Special time-outs
 *  Of the functions that ask QOR (`timeoutMs` behind a name or data). Beside them 1 to 0x7FFFFFFF
 * are good, the rest is a QOR_BAD_ARGUMENT. QorConnect, QorConnectWait and the functions that read
 *  streams just wait that long: 0 not at all, 0xFFFFFFFF without limit. */
/** @{ */
/** QOR_NOT_READY but for the cache; writes are carried out, unless later requests push them out. */
#define QOR_DO_NOT_WAIT 0u
#define QOR_TRANSPORT_DEFAULT 0xFFFFFFFEu /**< 2000 ms for QOR to take it, none for its data */
#define QOR_NO_LIMIT 0xFFFFFFFFu          /**< waits without limit; over TCP QOR_SILENT at once */
/** @} */

/** An open control of one QOR. */
typedef struct QorHandleValue* QorHandle;
/** A stream of parameter values. */
typedef struct QorStreamValue* QorStream;

/** @name The library and the calling thread's last call */
/** @{ */

/** QOR_VERSION of the library. */
QOR_IMPORT unsigned int QOR_CALL QorVersion(void);
/** QOR_VERSION_TEXT of the library. */
QOR_IMPORT const char* QOR_CALL QorVersionText(void);

/** What the calling thread's last call returned that tells a cause. Asking for what is known of the
 *  last call (these five) is no such call itself. */
QOR_IMPORT int QOR_CALL QorLastCause(void);
/** One sentence on what happened; empty after QOR_OK. */
QOR_IMPORT int QOR_CALL QorLastSentence(char* text, unsigned int capacity, unsigned int* needed);
/** What to check; empty after QOR_OK. */
QOR_IMPORT int QOR_CALL QorLastCheck(char* text, unsigned int capacity, unsigned int* needed);
/** Milliseconds that the call took. */
QOR_IMPORT unsigned int QOR_CALL QorLastElapsedMs(void);
/** 1 if the answer may belong to an earlier request: one for the same thing had timed out after
 *  QOR had taken it, and its data has not been seen since. 0 where the answer names its request,
 *  which not all of QOR's do, and else. A value that comes out of the cache, and a list of trouble
 *  codes of a stream, tell it of the read that brought them. */
QOR_IMPORT int QOR_CALL QorLastMayBelongToEarlier(void);
/** The name of a cause as it stands here, "QOR_SILENT"; "unknown" for other numbers. */
QOR_IMPORT const char* QOR_CALL QorCauseName(int cause);

/** @} */
/** @name Life */
/** @{ */

/**
 * Begins to control QOR: reads QOR's settings file, starts QOR unless it runs, at most 10 s; that
 * goes on after the return, and calls made meanwhile wait for it. QorPingQor tells when QOR is
 * there.
 * @param settingsPath  QOR's settings file; absolute with a drive letter, or relative to the host's
 *                      executable.
 * @param readPeriodMs  refresh period until the first connect brings its own; see QorGetParamData.
 * @param hostPath      the host's executable: the trace goes to the file of that name with the
 *                      extension ".log", its settings are read from ".cfg". The trace is the
 *                      process's: empty leaves it where an earlier handle has put it, and without
 *                      one its lines go to the debugger alone.
 * @param handle        gets the handle.
 */
QOR_IMPORT int QOR_CALL QorOpen(const char* settingsPath, unsigned int readPeriodMs,
                                const char* hostPath, QorHandle* handle);

/** Ends streams and a running connect. If QOR's settings file names its executable, disconnects the
 *  ECU and shuts QOR down; otherwise QOR and its connection stay as they are. About 5 s at most, 2
 * s more while a connect runs, and as long as callbacks that run take. Calls of other threads that
 * still wait end with QOR_AGENT_ENDED or by their time-out. */
QOR_IMPORT int QOR_CALL QorClose(QorHandle handle);

/** Whether what the library sends over TCP leaves at once (the socket option "no delay"); it begins
 *  without. For a QOR that acknowledges a request first and sends the data as a command of its own:
 *  there every read takes about 40 ms longer than QOR needs, because the next request waits in the
 *  socket until QOR's system has confirmed the library's acknowledgement. Where QOR sends the data
 *  as the answer it changes nothing, nor over window messages. It holds for the present connection,
 *  too, from the next request on.
 *  @param wanted  0 or not. */
QOR_IMPORT int QOR_CALL QorSetTcpNoDelay(QorHandle handle, int wanted);

/** @} */
/** @name State, asked without a request to QOR */
/** @{ */

/** Whether QOR reported an ECU online within the last 2 s (17 s after a step of a connect). */
QOR_IMPORT int QOR_CALL QorIsEcuOnline(QorHandle handle, int* online);
/** Whether a connect of this handle runs. */
QOR_IMPORT int QOR_CALL QorIsConnecting(QorHandle handle, int* connecting);
/** The path of QOR's executable; QOR_NOT_READY until the settings have been read, and for good if
 *  they name none. */
QOR_IMPORT int QOR_CALL QorGetQorExecutablePath(QorHandle handle, char* path, unsigned int capacity,
                                                unsigned int* needed);
/** The segment names for QorSetEcuSegment: the working page in RAM ... */
QOR_IMPORT const char* QOR_CALL QorGetEdcRamSegmentName(void);
/** ... and the reference page in ROM. */
QOR_IMPORT const char* QOR_CALL QorGetEdcRomSegmentName(void);

/** @} */
/** @name The connection */
/** @{ */

#define QOR_CONNECT_DEFAULT 1 /**< connection mode 0; bus mode 0 */
#define QOR_CONNECT_SECURITY_ACCESS \
    2                             /**< connection mode 0x30, securityDll is passed; bus mode 0 */
#define QOR_CONNECT_ALTERNATIVE 3 /**< connection mode 1; bus mode 1 */

/** How to reach the ECU. Fields without a comment are QOR's own and travel unchanged. */
typedef struct QorEcuConnect {
    unsigned int size;     /**< sizeof(QorEcuConnect) */
    unsigned int protocol; /**< 1 to 4; any other value is taken as 1 */
    unsigned int protocolOption;
    int optionFlag;
    unsigned int kLineBaudRate;   /**< bit/s */
    unsigned int canBaudRate;     /**< bit/s */
    unsigned int refreshPeriodMs; /**< see QorGetParamData and QorStartParamRead */
    unsigned int canRequestId;
    unsigned int canResponseId;
    unsigned int addressByte1; /**< 0 to 255 */
    unsigned int addressByte2; /**< 0 to 255 */
    unsigned int addressWord;
    int extraFlag;
    int finalFlag;
    const char* securityDll; /**< path, or null; for QOR_CONNECT_SECURITY_ACCESS only */
} QorEcuConnect;

/** Fills in what QOR itself would use, protocol 1 and a refresh period of 100 ms. Set size first.
 */
QOR_IMPORT int QOR_CALL QorEcuConnectDefaults(QorEcuConnect* settings);

/** Connects the ECU and waits for the end. `settings` may be null: the defaults. A connect that is
 *  not at its end after `timeoutMs` is cancelled: QOR_CANCELLED. That can take 15 s more, while QOR
 *  does not take the request. QOR is not told to stop: its own connect may go on. */
QOR_IMPORT int QOR_CALL QorConnect(QorHandle handle, const QorEcuConnect* settings, int type,
                                   unsigned int timeoutMs);
/** The same in the background; QOR_WRONG_ORDER while another connect of the handle runs. */
QOR_IMPORT int QOR_CALL QorConnectStart(QorHandle handle, const QorEcuConnect* settings, int type);

/** How far a connect is. */
typedef struct QorConnectProgress {
    unsigned int size;      /**< sizeof(QorConnectProgress) */
    int running;            /**< 1 until the connect has ended */
    int cause;              /**< how it ended; QOR_NOT_READY while it runs */
    int progress;           /**< QOR's own last figure, -1: none yet */
    unsigned int steps;     /**< so many figures of QOR have come */
    unsigned int elapsedMs; /**< since its start, or how long it took */
} QorConnectProgress;

/** Tells without waiting; QOR_WRONG_ORDER if there never was a connect. */
QOR_IMPORT int QOR_CALL QorConnectPoll(QorHandle handle, QorConnectProgress* progress);
/** Waits for the end of the present connect, or gives that of the last one again: its cause.
 *  QOR_NOT_READY: it still runs. */
QOR_IMPORT int QOR_CALL QorConnectWait(QorHandle handle, unsigned int timeoutMs);
/** Asks the present connect to end; it then ends with QOR_CANCELLED, unless it was quicker: soon,
 *  but while QOR has not taken its request, for which it has 10 s, only behind that. One that still
 *  waits for its turn never reaches QOR; what has reached it QOR is not told to stop. Without one
 *  nothing happens. */
QOR_IMPORT int QOR_CALL QorConnectCancel(QorHandle handle);
/** The reason in the words of the monitor ("Bootstrap failed - ..."), empty if there is none. */
QOR_IMPORT int QOR_CALL QorConnectReason(QorHandle handle, char* text, unsigned int capacity,
                                         unsigned int* needed);

/** Whether QOR answers. */
QOR_IMPORT int QOR_CALL QorPingQor(QorHandle handle, unsigned int timeoutMs);
/** Selects the memory page to work on, one of the two segment names. QOR has 10 s. */
QOR_IMPORT int QOR_CALL QorSetEcuSegment(QorHandle handle, const char* segment, int flag);

/** The files of a model. Null pointers are empty texts. */
typedef struct QorModelDescription {
    unsigned int size;      /**< sizeof(QorModelDescription) */
    unsigned int modelType; /**< 1 to 5; 6 is taken as 2, any other value as 1 */
    const char* model;      /**< path of the model file */
    unsigned int modelOption;
    const char* hex; /**< path of the data file; used only when not empty */
    unsigned int hexOption;
    const char* csv; /**< path of the second data file; used only when not empty */
    unsigned int csvOption;
    const char* const* extraKeys; /**< further entries for QOR, extraCount of each */
    const char* const* extraValues;
    unsigned int extraCount;
} QorModelDescription;

/** Lets QOR end its work with the ECU and open a model, and waits for the end: QOR has
 *  3 s to let the ECU go, 5 s to end its work and 90 s to open. */
QOR_IMPORT int QOR_CALL QorOpenModel(QorHandle handle, const QorModelDescription* model);

/** How to open the CAN bus. */
typedef struct QorCanBusConnect {
    unsigned int size;     /**< sizeof(QorCanBusConnect) */
    unsigned int busParam; /**< bus setting, a bit rate */
    int firstFlag;
    int secondFlag;
} QorCanBusConnect;

/** Opens the CAN bus, and waits for the end: QOR has 10 s. */
QOR_IMPORT int QOR_CALL QorConnectCanBus(QorHandle handle, const QorCanBusConnect* settings,
                                         int type);

/** @} */
/** @name Parameters */
/** @{ */

/** Describes a parameter; 3000 ms at most. Row 0 of QorResultText then has its texts: 0 the name
 *  that was asked for, 1 the name as QOR tells it, 2 to 4 QOR's first, second and third text.
 *  @param threeArrays  gets 1 for a parameter of three arrays, 0 for one of a single array. */
QOR_IMPORT int QOR_CALL QorGetParamDescription(QorHandle handle, const char* name,
                                               int* threeArrays);
/** Reads a parameter. Its two further arrays, if it has three, are arrays 1 and 2 of
 *  QorResultValues. Values that were read, written or streamed less than half a refresh period ago
 *  are returned at once, without asking QOR. */
QOR_IMPORT int QOR_CALL QorGetParamData(QorHandle handle, const char* name, unsigned int timeoutMs,
                                        double* values, unsigned int capacity,
                                        unsigned int* needed);
/** Reads a parameter whose values are character codes: one byte each, its low 8 bits. No zero is
 *  added. The bytes are the ECU's, not UTF-8. */
QOR_IMPORT int QOR_CALL QorGetParamDataAsString(QorHandle handle, const char* name,
                                                unsigned int timeoutMs, unsigned char* bytes,
                                                unsigned int capacity, unsigned int* needed);
/** Writes a parameter; the two further arrays are used only for one of three arrays. An array may
 *  be null with a count of 0. */
QOR_IMPORT int QOR_CALL QorSetParamData(QorHandle handle, const char* name, const double* values,
                                        unsigned int count, const double* second,
                                        unsigned int secondCount, const double* third,
                                        unsigned int thirdCount, unsigned int timeoutMs);
/** Writes a value as text, in QOR's own notation. */
QOR_IMPORT int QOR_CALL QorSetDynamicData(QorHandle handle, const char* name, const char* value,
                                          unsigned int timeoutMs);
/** Takes an actuator under direct control ... */
QOR_IMPORT int QOR_CALL QorStartDirectCtrl(QorHandle handle, const char* name,
                                           unsigned int timeoutMs);
/** ... and gives it back. */
QOR_IMPORT int QOR_CALL QorStopDirectCtrl(QorHandle handle, const char* name,
                                          unsigned int timeoutMs);
/** Reads several parameters in one exchange, past the cache.
 *  @param values  gets all arrays one after the other, in the order of the names.
 *  @param counts  null, or `nameCount` elements that get the length of each array, also when the
 *                 values did not fit. */
QOR_IMPORT int QOR_CALL QorGetParamDataAtOnce(QorHandle handle, const char* const* names,
                                              unsigned int nameCount, unsigned int timeoutMs,
                                              double* values, unsigned int capacity,
                                              unsigned int* needed, unsigned int* counts);

/** @} */
/** @name Diagnostics */
/** @{ */

/** One trouble code. Its four texts are columns 0 to 3 of its row of QorResultText. */
typedef struct QorDtc {
    unsigned int code;
    unsigned int status;
} QorDtc;

/** One CAN identifier and its value. */
typedef struct QorCanBusItem {
    unsigned int canId;
    int value;
} QorCanBusItem;

/** Clears the trouble codes. Waits exactly `timeoutMs`; QOR is given 400 ms. */
QOR_IMPORT int QOR_CALL QorClearDtc(QorHandle handle, unsigned int timeoutMs);
/** Reads the trouble codes. */
QOR_IMPORT int QOR_CALL QorGetDtcByStatus(QorHandle handle, unsigned int timeoutMs, QorDtc* dtcs,
                                          unsigned int capacity, unsigned int* needed);
/** Sends a KWP request. QOR_OK says that the exchange took place; `failed` gets the ECU's verdict,
 *  not 0 for a failure. Works only after a connect. */
QOR_IMPORT int QOR_CALL QorSendKwpCommand(QorHandle handle, unsigned int service,
                                          const unsigned char* data, unsigned int dataBytes,
                                          unsigned int timeoutMs, unsigned char* answer,
                                          unsigned int capacity, unsigned int* needed, int* failed);
/** Reads the values of CAN identifiers; QOR's answer may hold more or fewer. */
QOR_IMPORT int QOR_CALL QorGetCanBusData(QorHandle handle, const QorCanBusItem* wanted,
                                         unsigned int wantedCount, unsigned int timeoutMs,
                                         QorCanBusItem* items, unsigned int capacity,
                                         unsigned int* needed);
/** Sends a CAN message; the two numbers and the bytes are QOR's and travel unchanged. */
QOR_IMPORT int QOR_CALL QorSendCanBusMsg(QorHandle handle, unsigned int first, unsigned int second,
                                         const unsigned char* message, unsigned int messageBytes,
                                         unsigned int timeoutMs);

/** @} */
/** @name The calling thread's last result
 *  Of its last call on this handle that gave results, until its next one that does, or until the
 *  handle is closed. QOR_WRONG_ORDER if there is none of that kind. They ask nobody, and none of
 *  them changes the result. */
/** @{ */

/** Array `index`: of a read 0 to 2, of a read of several parameters one per name. */
QOR_IMPORT int QOR_CALL QorResultValues(QorHandle handle, unsigned int index, double* values,
                                        unsigned int capacity, unsigned int* needed);
/** The bytes of a KWP answer or of a read as string. */
QOR_IMPORT int QOR_CALL QorResultBytes(QorHandle handle, unsigned char* bytes,
                                       unsigned int capacity, unsigned int* needed);
/** A text of a description or of a trouble code; QOR_BAD_ANSWER if it is none of the code page. */
QOR_IMPORT int QOR_CALL QorResultText(QorHandle handle, unsigned int row, unsigned int column,
                                      char* text, unsigned int capacity, unsigned int* needed);
/** The trouble codes. */
QOR_IMPORT int QOR_CALL QorResultDtcs(QorHandle handle, QorDtc* dtcs, unsigned int capacity,
                                      unsigned int* needed);
/** The CAN identifiers. */
QOR_IMPORT int QOR_CALL QorResultCanBusItems(QorHandle handle, QorCanBusItem* items,
                                             unsigned int capacity, unsigned int* needed);

/** @} */
/** @name Streams */
/** @{ */

/** One streamed value. */
typedef struct QorSample {
    unsigned int name;   /**< which of the names, from 0 */
    unsigned int missed; /**< so many values of this name QOR has sent in this stream which the
                              reader has never got, up to this one */
    double value;
    double timeMs; /**< when it arrived; see QorNowMs */
} QorSample;

/** Milliseconds on the clock of QorSample, for the time that has passed since a value arrived. The
 *  system's clock moves in steps of 10 to 16 ms. */
QOR_IMPORT double QOR_CALL QorNowMs(void);

/** Begins to collect the values of these parameters as QOR sends them. It works at any time; the
 *  values flow once QOR has an ECU online, and again by themselves after QOR was away.
 *  @param slots  so many values can wait for the reader, 1 to 1,000,000; then the oldest go and are
 *                counted as missed. */
QOR_IMPORT int QOR_CALL QorStartParamRead(QorHandle handle, const char* const* names,
                                          unsigned int nameCount, unsigned int slots,
                                          QorStream* stream);
/** Takes out the oldest values, at most `capacity`, which must not be 0; `count` gets how many.
 *  Waits at most `timeoutMs` for the first one; QOR_NOT_READY if there was none, QOR_BAD_HANDLE if
 *  the stream was ended meanwhile. When there is none and the agent has ended, it tells that at
 *  once. QOR_UNKNOWN_NAME: QOR does not know one of the names, so none of them is streamed; that
 *  is tried again and again. */
QOR_IMPORT int QOR_CALL QorReadParamStream(QorStream stream, QorSample* samples,
                                           unsigned int capacity, unsigned int* count,
                                           unsigned int timeoutMs);
/** Ends a stream, and waits until the agent has told QOR. QOR_PUSHED_OUT: it has ended, but QOR
 * still sends the values. */
QOR_IMPORT int QOR_CALL QorStopParamRead(QorStream stream);

/** Begins to read the trouble codes every `periodMs`, given `timeoutMs` each time. There is one
 *  such stream per handle: a second call redirects it. Waits until the agent has come to it. */
QOR_IMPORT int QOR_CALL QorStartDtcRead(QorHandle handle, unsigned int timeoutMs,
                                        unsigned int periodMs);
/** The newest list that has not been read yet; QOR_NOT_READY if none comes within `timeoutMs`,
 *  QOR_NO_DATA when four reads in a row have failed, or were left out because QOR tells of no
 *  ECU (QorLastSentence tells why), QOR_WRONG_ORDER if none are being read (any more). The list
 *  becomes the thread's last result.
 *  @param timeMs  gets when it came, see QorNowMs.
 *  @param missed  gets how many lists the reader has never got. */
QOR_IMPORT int QOR_CALL QorReadDtcStream(QorHandle handle, unsigned int timeoutMs, QorDtc* dtcs,
                                         unsigned int capacity, unsigned int* needed,
                                         double* timeMs, unsigned int* missed);
/** Ends that; waits until the agent has come to it. */
QOR_IMPORT int QOR_CALL QorStopDtcRead(QorHandle handle);

/** @} */
/** @name QOR's message boxes */
/** @{ */

#define QOR_BOX_SHOW 0   /**< shown on the screen, which is how it begins */
#define QOR_BOX_ANSWER 1 /**< answered with a given choice, not shown */
#define QOR_BOX_ASK 2    /**< the host is asked, see QorAnswerMessageBox */

#define QOR_CHOICE_OK 1 /**< choices are the system's numbers of buttons */
#define QOR_CHOICE_CANCEL 2
#define QOR_CHOICE_ABORT 3
#define QOR_CHOICE_RETRY 4
#define QOR_CHOICE_IGNORE 5
#define QOR_CHOICE_YES 6
#define QOR_CHOICE_NO 7

/** What becomes of the message boxes that QOR wants shown.
 *  @param handle   null: for all handles that are opened from then on.
 *  @param policy   one of QOR_BOX_...
 *  @param choice   of QOR_BOX_ANSWER; with QOR_BOX_ASK for a host that does not answer in time.
 *  @param askMs    with QOR_BOX_ASK how long QOR waits for the host. */
QOR_IMPORT int QOR_CALL QorSetMessageBoxPolicy(QorHandle handle, int policy, unsigned int choice,
                                               unsigned int askMs);

/** A message box. */
typedef struct QorMessageBox {
    unsigned int size;   /**< sizeof(QorMessageBox) */
    unsigned int id;     /**< counts up from 1 */
    unsigned int type;   /**< the system's style value: buttons and symbol */
    int waiting;         /**< 1: it waits for the host's answer, or for the user's */
    unsigned int choice; /**< how it was answered; 0 if it waits: it is told only once, so how
                              it was answered later is not to be learnt here */
    double timeMs;       /**< when it came, see QorNowMs */
} QorMessageBox;

/** The oldest box that has not been told yet, whatever the policy; QOR_NOT_READY if there is none.
 *  At most 100 are kept, with texts of 1 MiB in all; the oldest go. When a text does not fit, the
 *  box can be asked for again with a larger buffer: it counts as told only once both texts have
 *  been copied, or were not wanted (null buffer and null size). Of several threads that ask at once
 * each gets another box. When QOR_NOT_READY comes because of that, the needed sizes may be those of
 * a box of theirs. */
QOR_IMPORT int QOR_CALL QorNextMessageBox(QorHandle handle, QorMessageBox* box, char* text,
                                          unsigned int textCapacity, unsigned int* textNeeded,
                                          char* caption, unsigned int captionCapacity,
                                          unsigned int* captionNeeded);
/** Answers a waiting box of QOR_BOX_ASK, once; QOR_WRONG_ORDER if it does not wait any more. */
QOR_IMPORT int QOR_CALL QorAnswerMessageBox(QorHandle handle, unsigned int id, unsigned int choice);

/** @} */
/** @name Callbacks, for who wants them
 *  Called on threads of the library or of the host's own calls; they must return soon and cannot
 *  close a handle: QOR_WRONG_ORDER. Null ends it; when the call that replaces one has returned, the
 *  old one is not called any more, unless that call was made within a callback. It waits for one
 *  that runs, so do not hold what the callback waits for. */
/** @{ */

/** A line of the log: a request, an answer or a failure, without a line end; what is longer than
 *  64 KiB is cut. */
typedef void(QOR_CALL* QorLogFunction)(void* user, int isFailure, const char* line);
QOR_IMPORT int QOR_CALL QorSetLog(QorHandle handle, QorLogFunction function, void* user);

/** A new figure of QOR during a connect. Called on the connect's own thread: what it asks of QOR
 *  waits for the connect's end, and of figures that come meanwhile the last 64 are told. */
typedef void(QOR_CALL* QorProgressFunction)(void* user, int progress);
QOR_IMPORT int QOR_CALL QorSetProgress(QorHandle handle, QorProgressFunction function, void* user);

/** @} */

#ifdef __cplusplus
}
#endif

/* NOLINTEND(modernize-use-using) */

#endif
