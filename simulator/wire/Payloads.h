#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// The payload of every command, one record per command id, fields in wire order. A command has one
/// layout for the request and for the answer. read() never fails: what a payload lacks keeps the
/// value that the field has here.
namespace simulator {

struct PingPayload {
    enum Status : std::uint32_t { Request = 0, Handled = 1, NotHandled = 2 };
    std::uint32_t status = Request;

    static PingPayload read(std::string_view payload);
    std::string write() const;
};

struct EditPayload {
    enum Stage : std::uint32_t { Information = 1, Export = 4, AdditionalExport = 5, Request = 7 };
    std::uint32_t stage = Request;
    std::uint32_t mode = 1;
    std::string path;
    std::uint32_t number = 0xFFFFFFFF;
    std::vector<std::string> files;
    std::vector<std::uint32_t> fileNumbers;
    std::vector<std::string> addFiles;
    std::vector<std::uint32_t> addFileNumbers;
    std::map<std::string, std::string> info;

    static EditPayload read(std::string_view payload);
    std::string write() const;
};

struct ConnectPayload {
    enum Mode : std::uint32_t { Normal = 0, Alternative = 1, Query = 2, Security = 0x30 };
    std::uint32_t protocol = 1;
    std::uint32_t protocolOption = 1;
    bool optionFlag = true;
    std::uint32_t kLineBaudRate = 10400;
    std::uint32_t canBaudRate = 125000;
    std::uint32_t refreshPeriodMs = 0;
    std::uint32_t mode = Normal;
    std::uint32_t canRequestId = 0xFFFFFFFF;
    std::uint32_t canResponseId = 0xFFFFFFFF;
    std::uint32_t addressByte1 = 0xFF;
    std::uint32_t addressByte2 = 0xFF;
    std::uint32_t addressWord = 255;
    std::uint32_t reserved = 0;
    bool extraFlag = true;
    std::string securityDll;
    bool finalFlag = true;

    static ConnectPayload read(std::string_view payload);
    std::string write() const;
};

struct ParamInfoPayload {
    std::string name;
    std::string firstText;
    std::string secondText;
    std::string thirdText;
    double firstLimit = 0.0;
    double secondLimit = 0.0;
    std::int32_t index = -1;
    bool threeArrays = true;

    static ParamInfoPayload read(std::string_view payload);
    std::string write() const;
};

struct ShutdownPayload {
    enum Flags : std::uint32_t { KeepProcess = 2, EndProcess = 4 };
    std::uint32_t flags = 0;

    static ShutdownPayload read(std::string_view payload);
    std::string write() const;
};

struct ParamListPayload {
    std::vector<std::uint32_t> indices;

    static ParamListPayload read(std::string_view payload);
    std::string write() const;
};

struct ParamDataPayload {
    enum Pseudo : std::int32_t { Online = -10, Progress = -11, Result = -12 };
    std::int32_t index = -1;
    double value = 0.0;

    static ParamDataPayload read(std::string_view payload);
    std::string write() const;
};

struct DirectCtrlPayload {
    enum Operation : std::uint32_t { Read = 1, Start = 2, Stop = 3, Write = 4, WriteText = 5 };
    std::uint32_t index = 0;
    std::uint32_t operation = 0;
    std::vector<double> values;
    std::string text;  ///< the parameter's name, or the text to write

    static DirectCtrlPayload read(std::string_view payload);
    std::string write() const;
};

struct RoutinePayload {
    enum Routine : std::uint32_t { ClearTroubleCodes = 3 };
    std::uint32_t routine = 0;

    static RoutinePayload read(std::string_view payload);
    std::string write() const;
};

struct TroubleCode {
    std::uint32_t code = 0;
    std::uint32_t status = 0;
    std::string texts[4];
};

struct TroubleCodesPayload {
    std::vector<TroubleCode> codes;
    bool option = false;

    static TroubleCodesPayload read(std::string_view payload);
    std::string write() const;
};

struct MessageBoxPayload {
    std::string caption;
    std::string text;
    std::uint32_t type = 0;
    std::uint32_t result = 0;

    static MessageBoxPayload read(std::string_view payload);
    std::string write() const;
};

struct HexPayload {
    std::uint32_t word = 0;
    std::string texts[4];

    static HexPayload read(std::string_view payload);
    std::string write() const;
};

struct StaticParamPayload {
    enum Operation : std::uint32_t { Read = 1, Write = 2 };
    std::uint32_t index = 0;
    std::uint32_t operation = 0;
    std::vector<double> first;  ///< the parameter's values
    std::vector<double> second;
    std::vector<double> third;

    static StaticParamPayload read(std::string_view payload);
    std::string write() const;
};

struct SegmentPayload {
    std::uint32_t word = 1;
    std::string segment;
    bool flag = false;

    static SegmentPayload read(std::string_view payload);
    std::string write() const;
};

struct KwpPayload {
    std::uint32_t channel = 1;
    std::uint32_t service = 0;
    std::string data;
    std::uint32_t timeoutMs = 0;
    bool failed = false;

    static KwpPayload read(std::string_view payload);
    std::string write() const;
};

struct CanConnectPayload {
    std::uint32_t busMode = 0;
    std::uint32_t busParam = 250000;
    bool firstFlag = true;
    bool secondFlag = false;

    static CanConnectPayload read(std::string_view payload);
    std::string write() const;
};

struct CanItem {
    std::uint32_t canId = 0;
    std::int32_t value = 0;
};

struct CanDataPayload {
    std::vector<CanItem> items;

    static CanDataPayload read(std::string_view payload);
    std::string write() const;
};

struct ReadTogetherPayload {
    std::vector<std::uint32_t> indices;
    std::vector<std::vector<double>> values;
    std::vector<std::string> names;

    static ReadTogetherPayload read(std::string_view payload);
    std::string write() const;
};

struct CanSendPayload {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    std::string data;

    static CanSendPayload read(std::string_view payload);
    std::string write() const;
};

}  // namespace simulator
