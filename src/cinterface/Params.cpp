// Parameters.

#include <utility>

#include "cinterface/Arguments.h"
#include "cinterface/OutBuffer.h"
#include "cinterface/Shell.h"

using cinterface::arrayOf;
using cinterface::callOn;
using cinterface::Cause;
using cinterface::namesOf;
using cinterface::OutBuffer;
using cinterface::Outcome;
using cinterface::outcomeOf;
using cinterface::Result;
using cinterface::Session;
using cinterface::textOf;
using cinterface::timeOutOf;
using cinterface::with;

namespace {

using Arrays = std::vector<std::vector<double>>;

/// The arrays one after the other.
std::vector<double> joined(const Arrays& arrays) {
    std::size_t count = 0;
    for (const auto& array : arrays) count += array.size();
    std::vector<double> all;
    all.reserve(count);
    for (const auto& array : arrays) all.insert(all.end(), array.begin(), array.end());
    return all;
}

/// What a host may know of a description, in the order of the columns. (The record itself has the
/// second and the third text the other way round, and hosts that rely on it.)
std::vector<std::string> columnsOf(wex::ParamDescription description) {
    return {std::move(description.name), std::move(description.text1), std::move(description.text2),
            std::move(description.text4), std::move(description.text3)};
}

}  // namespace

int QOR_CALL QorGetParamDescription(QorHandle handle, const char* name, int* threeArrays) {
    return callOn(handle, [&](Session& session) {
        wex::ParamDescription description = {};
        Outcome outcome =
            outcomeOf(session.facade().getParamDescription(textOf(name, "name"), description));
        if (outcome.cause != Cause::none) return outcome;
        const int three = description.threeArrays ? 1 : 0;
        Result result;
        result.texts = {columnsOf(std::move(description))};
        session.keep(std::move(result));
        if (threeArrays != nullptr) *threeArrays = three;
        return outcome;
    });
}

int QOR_CALL QorGetParamData(QorHandle handle, const char* name, unsigned int timeoutMs,
                             double* values, unsigned int capacity, unsigned int* needed) {
    return callOn(handle, [&](Session& session) {
        const OutBuffer<double> out(values, capacity, needed, "values");
        Arrays arrays(3);
        Outcome outcome = outcomeOf(session.facade().getParamData(
            textOf(name, "name"), arrays[0], arrays[1], arrays[2], timeOutOf(timeoutMs)));
        if (outcome.cause != Cause::none) return outcome;
        Result result;
        result.arrays = std::move(arrays);
        return with(outcome, out.put(session.keep(std::move(result))->arrays->front()));
    });
}

int QOR_CALL QorGetParamDataAsString(QorHandle handle, const char* name, unsigned int timeoutMs,
                                     unsigned char* bytes, unsigned int capacity,
                                     unsigned int* needed) {
    return callOn(handle, [&](Session& session) {
        const cinterface::OutBytes out(bytes, capacity, needed, "bytes");
        std::string text;
        Outcome outcome = outcomeOf(session.facade().getParamDataAsString(
            textOf(name, "name"), text, timeOutOf(timeoutMs)));
        if (outcome.cause != Cause::none) return outcome;
        Result result;
        result.bytes = std::move(text);
        return with(outcome, out.put(*session.keep(std::move(result))->bytes));
    });
}

int QOR_CALL QorSetParamData(QorHandle handle, const char* name, const double* values,
                             unsigned int count, const double* second, unsigned int secondCount,
                             const double* third, unsigned int thirdCount, unsigned int timeoutMs) {
    return callOn(handle, [&](Session& session) {
        const std::string param = textOf(name, "name");
        return outcomeOf(session.facade().setParamData(
            param, arrayOf(values, count, "values"), arrayOf(second, secondCount, "second"),
            arrayOf(third, thirdCount, "third"), timeOutOf(timeoutMs)));
    });
}

int QOR_CALL QorSetDynamicData(QorHandle handle, const char* name, const char* value,
                               unsigned int timeoutMs) {
    return callOn(handle, [&](Session& session) {
        const std::string param = textOf(name, "name");
        return outcomeOf(session.facade().setDynamicData(
            param, textOf(value, "value", cinterface::maxRecordBytes), timeOutOf(timeoutMs)));
    });
}

int QOR_CALL QorStartDirectCtrl(QorHandle handle, const char* name, unsigned int timeoutMs) {
    return callOn(handle, [&](Session& session) {
        return outcomeOf(
            session.facade().startDirectCtrl(textOf(name, "name"), timeOutOf(timeoutMs)));
    });
}

int QOR_CALL QorStopDirectCtrl(QorHandle handle, const char* name, unsigned int timeoutMs) {
    return callOn(handle, [&](Session& session) {
        return outcomeOf(
            session.facade().stopDirectCtrl(textOf(name, "name"), timeOutOf(timeoutMs)));
    });
}

int QOR_CALL QorGetParamDataAtOnce(QorHandle handle, const char* const* names,
                                   unsigned int nameCount, unsigned int timeoutMs, double* values,
                                   unsigned int capacity, unsigned int* needed,
                                   unsigned int* counts) {
    return callOn(handle, [&](Session& session) {
        const OutBuffer<double> out(values, capacity, needed, "values");
        Arrays arrays;
        Outcome outcome = outcomeOf(session.facade().getParamDataAtOnce(
            namesOf(names, nameCount), arrays, timeOutOf(timeoutMs)));
        if (outcome.cause != Cause::none) return outcome;
        const std::vector<double> all = joined(arrays);
        if (counts != nullptr)
            for (std::size_t i = 0; i < arrays.size() && i < nameCount; ++i)
                counts[i] = static_cast<unsigned int>(arrays[i].size());
        Result result;
        result.arrays = std::move(arrays);
        session.keep(std::move(result));
        return with(outcome, out.put(all));
    });
}
