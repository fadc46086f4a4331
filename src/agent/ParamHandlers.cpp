#include "agent/QorProtocolAgent.h"

using protocol::ParamInfo;

namespace {

constexpr unsigned int describeMs = 400;

/// Names and texts in the order in which hosts have always had them: the second and the third
/// text change places, the limits and the index stay behind.
wex::ParamDescription describe(const std::string& name, const ParamInfo& record) {
    wex::ParamDescription description;
    description.name = name;
    description.text1 = record.name;
    description.text2 = record.firstText;
    description.text3 = record.thirdText;
    description.text4 = record.secondText;
    description.value = 0;
    description.threeArrays = record.threeArrays;
    return description;
}

}  // namespace

bool QorProtocolAgent::readDescription(const Request<channel::CmdDataParamInfo>& request) {
    ParamInfo record;
    if (!client_->getParamInfo(request->name, record, describeMs, false)) return false;
    return request.succeed(std::make_shared<channel::CmdDataParamInfo>(
        request->name, describe(request->name, record)));
}

bool QorProtocolAgent::readParam(const Request<channel::CmdDataParamData>& request) {
    const unsigned int timeoutMs = request->timeoutMs;
    ParamInfo record;
    if (!client_->lookUp(request->name, record, timeoutMs)) return false;
    SampledValue read;
    // A parameter of one array is always asked for afresh: the facade has a cache of its own.
    const bool done = record.threeArrays
                          ? client_->getStaticParam(request->name, read, timeoutMs)
                          : client_->getParamData(request->name, read.values, timeoutMs, true);
    if (!done) return false;
    auto result = std::make_shared<channel::CmdDataParamData>(request->name, timeoutMs);
    result->values = std::move(read.values);
    result->second = std::move(read.second);
    result->third = std::move(read.third);
    return request.succeed(std::move(result));
}

bool QorProtocolAgent::writeParam(const Request<channel::CmdDataParamData>& request) {
    // Taken out of the request, which may live on in a slot of the queue: nobody else reads it.
    SampledValue written{
        std::move(request->values), std::move(request->second), std::move(request->third), {}};
    ParamInfo record;
    if (!client_->lookUp(request->name, record, describeMs)) return false;
    const bool done = record.threeArrays
                          ? client_->setStaticParam(request->name, std::move(written))
                          : client_->setParamData(request->name, std::move(written.values));
    return done && request.succeed();
}

bool QorProtocolAgent::setDynamic(const Request<channel::CmdDataParamData>& request) {
    return client_->setDynamicData(request->name, std::move(request->values),
                                   std::move(request->text)) &&
           request.succeed();
}

bool QorProtocolAgent::startControl(const Request<channel::CmdDataParamData>& request) {
    return client_->startDirectCtrl(request->name) && request.succeed();
}

bool QorProtocolAgent::stopControl(const Request<channel::CmdDataParamData>& request) {
    return client_->stopDirectCtrl(request->name) && request.succeed();
}

bool QorProtocolAgent::readTogether(const Request<channel::CmdParamDataAtOnce>& request) {
    auto results =
        std::make_shared<channel::CmdParamDataAtOnce>(request->names, request->timeoutMs);
    return client_->readTogether(request->names, results->values, request->timeoutMs) &&
           request.succeed(std::move(results));
}
