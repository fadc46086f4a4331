#include "behaviour/RequestFacts.h"

#include "wire/Payloads.h"

namespace simulator {

namespace {

/// For a request that begins with an index and an operation.
template <class Payload>
void setParameter(RequestFacts& facts, const Payload& payload, const ParameterStore& parameters) {
    facts.operation = payload.operation;
    facts.index = payload.index;
    if (const ParameterModel* model = parameters.at(payload.index)) facts.name = model->name;
}

}  // namespace

RequestFacts factsOf(const Record& request, const ParameterStore& parameters) {
    RequestFacts facts;
    facts.id = request.id;
    switch (request.id) {
        case CommandId::StartEdit:
            facts.operation = EditPayload::read(request.payload).stage;
            break;
        case CommandId::KwpConnect:
            facts.operation = ConnectPayload::read(request.payload).mode;
            break;
        case CommandId::GetParamInfo:
            facts.name = ParamInfoPayload::read(request.payload).name;
            break;
        case CommandId::Shutdown:
            facts.operation = ShutdownPayload::read(request.payload).flags;
            break;
        case CommandId::DirectCtrl:
            setParameter(facts, DirectCtrlPayload::read(request.payload), parameters);
            break;
        case CommandId::EcuToolRoutine:
            facts.operation = RoutinePayload::read(request.payload).routine;
            break;
        case CommandId::StaticParam:
            setParameter(facts, StaticParamPayload::read(request.payload), parameters);
            break;
        case CommandId::EcuSegment:
            facts.name = SegmentPayload::read(request.payload).segment;
            break;
        case CommandId::ExecKwp:
            facts.operation = KwpPayload::read(request.payload).service;
            break;
        default:
            break;
    }
    return facts;
}

}  // namespace simulator
