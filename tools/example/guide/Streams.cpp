#include "Streams.h"

#include <windows.h>

#include "Session.h"

namespace guide {

// [startParamRead]
// Waits until a measurement rises above a limit. A queue of one slot always holds the newest.
bool awaitAbove(const QorControlFacade& qor, ValueQueue& queue, const std::string& name,
                double limit, unsigned int patienceMs) {
    qor.startParamRead(&queue, {name});
    const ULONGLONG end = GetTickCount64() + patienceMs;
    while (GetTickCount64() < end) {
        Values fresh;  // only what is fresh is in it, so look at the names when there are several
        if (queue.pop(fresh, 50) && fresh.front().values.front() > limit) return true;
    }
    return false;  // the stream goes on until stopParamRead
}
// [/startParamRead]

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
bool watchCodes(const QorControlFacade& qor, CodeQueue& queue) {
    return qor.startDtcRead(&queue, 300, 500);
}

Watched nextCodes(CodeQueue& queue, unsigned int waitMs, Codes& codes) {
    if (!queue.pop(codes, waitMs)) return Watched::nothingYet;
    if (codes.empty()) return Watched::noCodes;
    const bool isMark = codes.size() == 1 && codes[0].code == 0 && codes[0].text1.empty();
    return isMark ? Watched::readingFails : Watched::codes;
}
// [/startDtcRead]

// [stopDtcRead]
// The same rule as for values. The answer to the ping came after the agent had seen the stop.
bool endCodes(const QorControlFacade& qor, std::unique_ptr<CodeQueue>& queue) {
    if (!qor.stopDtcRead() || !qor.pingQor(2000)) return false;
    queue.reset();
    return true;
}
// [/stopDtcRead]

// [queues after shutdown]
// Without a stop: the end of the agent thread ends all streams.
void endAll(std::unique_ptr<QorControlFacade> qor, std::unique_ptr<ValueQueue> values) {
    if (!shutDown(*qor)) static_cast<void>(values.release());  // let go: leak it on purpose
}
// [/queues after shutdown]

}  // namespace guide
