#include "wire/Payloads.h"

#include "wire/Reader.h"
#include "wire/Writer.h"

namespace simulator {

PingPayload PingPayload::read(std::string_view payload) {
    Reader in(payload);
    PingPayload p;
    p.status = in.u32(p.status);
    return p;
}

std::string PingPayload::write() const {
    return Writer().u32(status).take();
}

EditPayload EditPayload::read(std::string_view payload) {
    Reader in(payload);
    EditPayload p;
    p.stage = in.u32(p.stage);
    p.mode = in.u32(p.mode);
    p.path = in.text();
    p.number = in.u32(p.number);
    p.files = in.texts();
    p.fileNumbers = in.words();
    p.addFiles = in.texts();
    p.addFileNumbers = in.words();
    using Entry = std::pair<std::string, std::string>;
    for (const Entry& entry : in.sequence<Entry>([](Reader& r) {
             std::string key = r.text();
             return Entry(std::move(key), r.text());
         })) {
        p.info[entry.first] = entry.second;
    }
    return p;
}

std::string EditPayload::write() const {
    Writer out;
    out.u32(stage).u32(mode).text(path).u32(number);
    out.texts(files).words(fileNumbers).texts(addFiles).words(addFileNumbers);
    out.count(info.size());
    for (const auto& [key, value] : info) out.text(key).text(value);
    return out.take();
}

ConnectPayload ConnectPayload::read(std::string_view payload) {
    Reader in(payload);
    ConnectPayload p;
    p.protocol = in.u32(p.protocol);
    p.protocolOption = in.u32(p.protocolOption);
    p.optionFlag = in.boolean(p.optionFlag);
    p.kLineBaudRate = in.u32(p.kLineBaudRate);
    p.canBaudRate = in.u32(p.canBaudRate);
    p.refreshPeriodMs = in.u32(p.refreshPeriodMs);
    p.mode = in.u32(p.mode);
    p.canRequestId = in.u32(p.canRequestId);
    p.canResponseId = in.u32(p.canResponseId);
    p.addressByte1 = in.u32(p.addressByte1);
    p.addressByte2 = in.u32(p.addressByte2);
    p.addressWord = in.u32(p.addressWord);
    p.reserved = in.u32(p.reserved);
    p.extraFlag = in.boolean(p.extraFlag);
    p.securityDll = in.text();
    p.finalFlag = in.boolean(p.finalFlag);
    return p;
}

std::string ConnectPayload::write() const {
    Writer out;
    out.u32(protocol).u32(protocolOption).boolean(optionFlag);
    out.u32(kLineBaudRate).u32(canBaudRate).u32(refreshPeriodMs);
    out.u32(mode).u32(canRequestId).u32(canResponseId);
    out.u32(addressByte1).u32(addressByte2).u32(addressWord).u32(reserved);
    return out.boolean(extraFlag).text(securityDll).boolean(finalFlag).take();
}

ParamInfoPayload ParamInfoPayload::read(std::string_view payload) {
    Reader in(payload);
    ParamInfoPayload p;
    p.name = in.text();
    p.firstText = in.text();
    p.secondText = in.text();
    p.thirdText = in.text();
    p.firstLimit = in.f64(p.firstLimit);
    p.secondLimit = in.f64(p.secondLimit);
    p.index = in.i32(p.index);
    p.threeArrays = in.boolean(p.threeArrays);
    return p;
}

std::string ParamInfoPayload::write() const {
    Writer out;
    out.text(name).text(firstText).text(secondText).text(thirdText);
    return out.f64(firstLimit).f64(secondLimit).i32(index).boolean(threeArrays).take();
}

ShutdownPayload ShutdownPayload::read(std::string_view payload) {
    Reader in(payload);
    return {in.u32()};
}

std::string ShutdownPayload::write() const {
    return Writer().u32(flags).take();
}

ParamListPayload ParamListPayload::read(std::string_view payload) {
    Reader in(payload);
    return {in.wordsToEnd()};
}

std::string ParamListPayload::write() const {
    Writer out;
    for (const std::uint32_t index : indices) out.u32(index);
    return out.take();
}

ParamDataPayload ParamDataPayload::read(std::string_view payload) {
    Reader in(payload);
    ParamDataPayload p;
    p.index = in.i32(p.index);
    p.value = in.f64(p.value);
    return p;
}

std::string ParamDataPayload::write() const {
    return Writer().i32(index).f64(value).take();
}

DirectCtrlPayload DirectCtrlPayload::read(std::string_view payload) {
    Reader in(payload);
    DirectCtrlPayload p;
    p.index = in.u32();
    p.operation = in.u32();
    p.values = in.doubles();
    p.text = in.text();
    return p;
}

std::string DirectCtrlPayload::write() const {
    return Writer().u32(index).u32(operation).doubles(values).text(text).take();
}

RoutinePayload RoutinePayload::read(std::string_view payload) {
    Reader in(payload);
    return {in.u32()};
}

std::string RoutinePayload::write() const {
    return Writer().u32(routine).take();
}

TroubleCodesPayload TroubleCodesPayload::read(std::string_view payload) {
    Reader in(payload);
    TroubleCodesPayload p;
    p.codes = in.sequence<TroubleCode>([](Reader& r) {
        TroubleCode code;
        code.code = r.u32();
        code.status = r.u32();
        for (std::string& text : code.texts) text = r.text();
        return code;
    });
    p.option = in.boolean();
    return p;
}

std::string TroubleCodesPayload::write() const {
    Writer out;
    out.count(codes.size());
    for (const TroubleCode& code : codes) {
        out.u32(code.code).u32(code.status);
        for (const std::string& text : code.texts) out.text(text);
    }
    return out.boolean(option).take();
}

MessageBoxPayload MessageBoxPayload::read(std::string_view payload) {
    Reader in(payload);
    MessageBoxPayload p;
    p.caption = in.text();
    p.text = in.text();
    p.type = in.u32();
    p.result = in.u32();
    return p;
}

std::string MessageBoxPayload::write() const {
    return Writer().text(caption).text(text).u32(type).u32(result).take();
}

HexPayload HexPayload::read(std::string_view payload) {
    Reader in(payload);
    HexPayload p;
    p.word = in.u32();
    for (std::string& text : p.texts) text = in.text();
    return p;
}

std::string HexPayload::write() const {
    Writer out;
    out.u32(word);
    for (const std::string& text : texts) out.text(text);
    return out.take();
}

StaticParamPayload StaticParamPayload::read(std::string_view payload) {
    Reader in(payload);
    StaticParamPayload p;
    p.index = in.u32();
    p.operation = in.u32();
    p.first = in.doubles();
    p.second = in.doubles();
    p.third = in.doubles();
    return p;
}

std::string StaticParamPayload::write() const {
    return Writer().u32(index).u32(operation).doubles(first).doubles(second).doubles(third).take();
}

SegmentPayload SegmentPayload::read(std::string_view payload) {
    Reader in(payload);
    SegmentPayload p;
    p.word = in.u32(p.word);
    p.segment = in.text();
    p.flag = in.boolean();
    return p;
}

std::string SegmentPayload::write() const {
    return Writer().u32(word).text(segment).boolean(flag).take();
}

KwpPayload KwpPayload::read(std::string_view payload) {
    Reader in(payload);
    KwpPayload p;
    p.channel = in.u32(p.channel);
    p.service = in.u32();
    p.data = in.text();
    p.timeoutMs = in.u32();
    p.failed = in.boolean();
    return p;
}

std::string KwpPayload::write() const {
    return Writer().u32(channel).u32(service).text(data).u32(timeoutMs).boolean(failed).take();
}

CanConnectPayload CanConnectPayload::read(std::string_view payload) {
    Reader in(payload);
    CanConnectPayload p;
    p.busMode = in.u32(p.busMode);
    p.busParam = in.u32(p.busParam);
    p.firstFlag = in.boolean(p.firstFlag);
    p.secondFlag = in.boolean(p.secondFlag);
    return p;
}

std::string CanConnectPayload::write() const {
    return Writer().u32(busMode).u32(busParam).boolean(firstFlag).boolean(secondFlag).take();
}

CanDataPayload CanDataPayload::read(std::string_view payload) {
    Reader in(payload);
    return {in.sequence<CanItem>([](Reader& r) {
        CanItem item;
        item.canId = r.u32();
        item.value = r.i32();
        return item;
    })};
}

std::string CanDataPayload::write() const {
    Writer out;
    out.count(items.size());
    for (const CanItem& item : items) out.u32(item.canId).i32(item.value);
    return out.take();
}

ReadTogetherPayload ReadTogetherPayload::read(std::string_view payload) {
    Reader in(payload);
    ReadTogetherPayload p;
    p.indices = in.words();
    p.values = in.sequence<std::vector<double>>([](Reader& r) { return r.doubles(); });
    p.names = in.texts();
    return p;
}

std::string ReadTogetherPayload::write() const {
    Writer out;
    out.words(indices).count(values.size());
    for (const std::vector<double>& vector : values) out.doubles(vector);
    return out.texts(names).take();
}

CanSendPayload CanSendPayload::read(std::string_view payload) {
    Reader in(payload);
    CanSendPayload p;
    p.first = in.u32();
    p.second = in.u32();
    p.data = in.text();
    return p;
}

std::string CanSendPayload::write() const {
    return Writer().u32(first).u32(second).text(data).take();
}

}  // namespace simulator
