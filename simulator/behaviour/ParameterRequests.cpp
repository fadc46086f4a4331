#include "behaviour/ParameterRequests.h"

#include <utility>

namespace simulator {

namespace {

std::string unknownIndex(std::uint32_t index) {
    return "there is no parameter with index " + std::to_string(index);
}

Refusal carryOut(ParameterStore& parameters, const DirectCtrlPayload& request) {
    switch (request.operation) {
        case DirectCtrlPayload::Read:
            return std::nullopt;
        case DirectCtrlPayload::Start:
            return parameters.startControl(request.index);
        case DirectCtrlPayload::Stop:
            return parameters.stopControl(request.index);
        case DirectCtrlPayload::Write:
            return parameters.writeValues(request.index, request.values);
        case DirectCtrlPayload::WriteText:
            return parameters.writeText(request.index, request.text);
        default:
            return "there is no operation " + std::to_string(request.operation);
    }
}

std::uint32_t indexBehind(std::uint32_t index, const ParameterStore& parameters) {
    return parameters.at(index + 1) != nullptr ? index + 1 : 0;
}

std::string nameBehind(const std::string& name, const ParameterStore& parameters) {
    const ParameterModel* const model = parameters.find(name);
    if (model == nullptr) return name;
    const auto index = static_cast<std::uint32_t>(parameters.indexOf(*model));
    return parameters.at(indexBehind(index, parameters))->name;
}

template <class Payload>
std::string readingBehind(const std::string& bytes, const ParameterStore& parameters) {
    Payload payload = Payload::read(bytes);
    if (payload.operation != Payload::Read) return bytes;
    payload.index = indexBehind(payload.index, parameters);
    return payload.write();
}

}  // namespace

// An unknown name is answered, not refused: its record has index -1 and is empty otherwise.
Outcome getParamInfo(Ecu& ecu, std::string_view payload) {
    ParamInfoPayload info;
    info.name = ParamInfoPayload::read(payload).name;
    if (const ParameterModel* model = ecu.parameters.find(info.name)) {
        info.firstText = model->description;
        info.secondText = model->unit;
        info.thirdText = model->group;
        info.firstLimit = model->lowest;
        info.secondLimit = model->highest;
        info.index = ecu.parameters.indexOf(*model);
        info.threeArrays = model->threeArrays();
    }
    return Outcome::data(info.write());
}

Outcome directCtrl(Ecu& ecu, std::string_view payload) {
    DirectCtrlPayload request = DirectCtrlPayload::read(payload);
    const ParameterModel* model = ecu.parameters.at(request.index);
    if (model == nullptr) return Outcome::refused(unknownIndex(request.index));
    Refusal refusal = carryOut(ecu.parameters, request);
    request.values = ecu.parameters.read(request.index).first;
    request.text = model->name;
    Outcome outcome = Outcome::unlessRefused(std::move(refusal), request.write());
    outcome.answerIsData = request.operation == DirectCtrlPayload::Read;
    return outcome;
}

Outcome staticParam(Ecu& ecu, std::string_view payload) {
    StaticParamPayload request = StaticParamPayload::read(payload);
    if (ecu.parameters.at(request.index) == nullptr) {
        return Outcome::refused(unknownIndex(request.index));
    }
    Refusal refusal;
    if (request.operation == StaticParamPayload::Write) {
        refusal = ecu.parameters.writeArrays(request.index,
                                             {request.first, request.second, request.third});
    } else if (request.operation != StaticParamPayload::Read) {
        refusal = "there is no operation " + std::to_string(request.operation);
    }
    const Arrays arrays = ecu.parameters.read(request.index);
    request.first = arrays.first;
    request.second = arrays.second;
    request.third = arrays.third;
    Outcome outcome = Outcome::unlessRefused(std::move(refusal), request.write());
    outcome.answerIsData = request.operation == StaticParamPayload::Read;
    return outcome;
}

Outcome readTogether(Ecu& ecu, std::string_view payload) {
    ReadTogetherPayload request = ReadTogetherPayload::read(payload);
    request.values.clear();
    for (const std::uint32_t index : request.indices) {
        if (ecu.parameters.at(index) == nullptr) return Outcome::refused(unknownIndex(index));
        request.values.push_back(ecu.parameters.read(index).first);
    }
    return Outcome::data(request.write());
}

Record askingForAnother(Record request, const ParameterStore& parameters) {
    if (request.id == CommandId::GetParamInfo) {
        ParamInfoPayload info = ParamInfoPayload::read(request.payload);
        info.name = nameBehind(info.name, parameters);
        request.payload = info.write();
    }
    if (request.id == CommandId::DirectCtrl)
        request.payload = readingBehind<DirectCtrlPayload>(request.payload, parameters);
    if (request.id == CommandId::StaticParam)
        request.payload = readingBehind<StaticParamPayload>(request.payload, parameters);
    if (request.id == CommandId::ReadTogether) {
        ReadTogetherPayload together = ReadTogetherPayload::read(request.payload);
        for (std::uint32_t& index : together.indices) index = indexBehind(index, parameters);
        request.payload = together.write();
    }
    return request;
}

// One unknown index refuses the whole list; the old one stays in force.
Outcome setParamList(Ecu& ecu, std::string_view payload) {
    ParamListPayload request = ParamListPayload::read(payload);
    for (const std::uint32_t index : request.indices) {
        if (ecu.parameters.at(index) == nullptr) return Outcome::refused(unknownIndex(index));
    }
    ecu.subscription.replace(std::move(request.indices));
    return Outcome::done();
}

}  // namespace simulator
