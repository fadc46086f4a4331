// The calling thread's last result on a handle.

#include "cinterface/OutBuffer.h"
#include "cinterface/Shell.h"
#include "cinterface/Text.h"

using cinterface::callOn;
using cinterface::Cause;
using cinterface::OutBuffer;
using cinterface::Result;
using cinterface::Session;

namespace {

/// One kind of the thread's last result; throws a Refusal if it has none. The result lives as long
/// as `holder`.
template <class Kind>
const Kind& lastOf(Session& session, std::optional<Kind> Result::*kind,
                   std::shared_ptr<const Result>& holder) {
    holder = session.lastResult();
    if (holder == nullptr || !((*holder).*kind))
        cinterface::refuse(Cause::wrongOrder, "this thread has no such result on this handle");
    return *((*holder).*kind);
}

template <class Items>
const typename Items::value_type& elementOf(const Items& items, unsigned int index,
                                            const char* what) {
    if (index >= items.size())
        cinterface::refuseArgument(std::string(what) + " is too large, there are " +
                                   std::to_string(items.size()));
    return items[index];
}

}  // namespace

int QOR_CALL QorResultValues(QorHandle handle, unsigned int index, double* values,
                             unsigned int capacity, unsigned int* needed) {
    return callOn(handle, [&](Session& session) {
        const OutBuffer<double> out(values, capacity, needed, "values");
        std::shared_ptr<const Result> result;
        return out.put(elementOf(lastOf(session, &Result::arrays, result), index, "index"));
    });
}

int QOR_CALL QorResultBytes(QorHandle handle, unsigned char* bytes, unsigned int capacity,
                            unsigned int* needed) {
    return callOn(handle, [&](Session& session) {
        const cinterface::OutBytes out(bytes, capacity, needed, "bytes");
        std::shared_ptr<const Result> result;
        return out.put(lastOf(session, &Result::bytes, result));
    });
}

int QOR_CALL QorResultText(QorHandle handle, unsigned int row, unsigned int column, char* text,
                           unsigned int capacity, unsigned int* needed) {
    return callOn(handle, [&](Session& session) {
        const cinterface::OutText out(text, capacity, needed, "text");
        std::shared_ptr<const Result> result;
        const auto& columns = elementOf(lastOf(session, &Result::texts, result), row, "row");
        const auto utf8 = cinterface::text::utf8Of(elementOf(columns, column, "column"));
        if (!utf8) cinterface::refuse(Cause::badAnswer, "the text is none of the ANSI code page");
        return out.put(*utf8);
    });
}

int QOR_CALL QorResultDtcs(QorHandle handle, QorDtc* dtcs, unsigned int capacity,
                           unsigned int* needed) {
    return callOn(handle, [&](Session& session) {
        const OutBuffer<QorDtc> out(dtcs, capacity, needed, "dtcs");
        std::shared_ptr<const Result> result;
        return out.put(lastOf(session, &Result::dtcs, result));
    });
}

int QOR_CALL QorResultCanBusItems(QorHandle handle, QorCanBusItem* items, unsigned int capacity,
                                  unsigned int* needed) {
    return callOn(handle, [&](Session& session) {
        const OutBuffer<QorCanBusItem> out(items, capacity, needed, "items");
        std::shared_ptr<const Result> result;
        return out.put(lastOf(session, &Result::items, result));
    });
}
