#include "Streams.h"

#include <windows.h>

#include "Session.h"

namespace guide {

// [startParamRead]
// Waits until a measurement rises above a limit. A stream of one slot always holds the newest, and
// ends with this function.
bool awaitAbove(const QorControlFacade& qor, const std::string& name, double limit,
                unsigned int patienceMs, const EolLog* log) {
    ValueStream stream(qor, {name}, 1, log);
    const ULONGLONG end = GetTickCount64() + patienceMs;
    while (GetTickCount64() < end) {
        Values fresh;  // only what is fresh is in it, so look at the names when there are several
        if (stream.pop(fresh, 50) && fresh.front().values.front() > limit) return true;
    }
    return false;
}
// [/startParamRead]

// [queue of its own]
// Without the guard, and for a queue of your own. It must stay alive until `endValues` is true.
void beginValues(const QorControlFacade& qor, const std::string& name, ValueQueue& queue) {
    qor.startParamRead(&queue, {name});  // the stream goes on until stopParamRead
}
// [/queue of its own]

// [stopParamRead]
// Ends a stream and frees its queue. False: the queue must stay; call this again later.
bool endValues(const QorControlFacade& qor, std::unique_ptr<ValueQueue>& queue) {
    qor.stopParamRead(queue.get());
    if (!qor.pingQor(2000)) return false;  // not answered: the agent may still be filling it
    queue.reset();
    return true;
}
// [/stopParamRead]

// [startDtcRead]
// A list every 500 ms; four slots are two seconds of them.
std::unique_ptr<CodeStream> watchCodes(const QorControlFacade& qor, const EolLog* log) {
    return std::make_unique<CodeStream>(qor, 300, 500, 4, log);
}

Watched nextCodes(CodeStream& stream, unsigned int waitMs, Codes& codes) {
    if (!stream.pop(codes, waitMs)) return Watched::nothingYet;
    if (codes.empty()) return Watched::noCodes;
    const bool isMark = codes.size() == 1 && codes[0].code == 0 && codes[0].text1.empty();
    return isMark ? Watched::readingFails : Watched::codes;
}
// [/startDtcRead]

// [stopDtcRead]
// False: ask again later. What is not ended here ends with the object, as well as it can.
bool endCodes(CodeStream& stream) {
    return stream.end(2000);
}
// [/stopDtcRead]

// [queues after shutdown]
// A queue of your own without a stop: the end of the agent thread ends all streams.
void endAll(std::unique_ptr<QorControlFacade> qor, std::unique_ptr<ValueQueue> values) {
    if (!shutDown(*qor)) static_cast<void>(values.release());  // let go: leak it on purpose
}
// [/queues after shutdown]

}  // namespace guide
