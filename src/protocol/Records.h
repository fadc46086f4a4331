#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "common/Doubles.h"
#include "protocol/Wire.h"

/// The payloads of the 19 commands. Each record names its fields once, in wire order; writing and
/// reading both follow that list. The initial values are what a field keeps when a received
/// payload ends before it. No value is checked on reception.
namespace protocol {

/// 0. In a request 0; in an acknowledgement 0 = released, 1 = handled, 2 = not handled.
struct Ping {
    static constexpr std::uint32_t handled = 1;
    static constexpr std::uint32_t notHandled = 2;

    std::uint32_t status = 0;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("status", self.status);
    }
};

/// 1. Opens a model (stage 7, from the client) or tells of what was exported (from QOR).
struct StartEdit {
    std::uint32_t stage = 7;
    std::uint32_t mode = 1;
    std::string path;
    std::uint32_t number = 0xFFFFFFFFu;
    std::vector<std::string> files;
    std::vector<std::uint32_t> fileNumbers;
    std::vector<std::string> addFiles;
    std::vector<std::uint32_t> addFileNumbers;
    std::map<std::string, std::string> info;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("stage", self.stage);
        visit("mode", self.mode);
        visit("path", self.path);
        visit("number", self.number);
        visit("files", self.files);
        visit("fileNumbers", self.fileNumbers);
        visit("addFiles", self.addFiles);
        visit("addFileNumbers", self.addFileNumbers);
        visit("info", self.info);
    }
};

/// 2. The ECU connection. Mode 2 turns the record into a question for the ECU's online state.
struct KwpConnect {
    static constexpr std::uint32_t modeDefault = 0;
    static constexpr std::uint32_t modeAlternative = 1;
    static constexpr std::uint32_t modeOnlineQuery = 2;
    static constexpr std::uint32_t modeSecurityAccess = 0x30;

    std::uint32_t protocol = 1;
    std::uint32_t protocolOption = 1;
    bool optionFlag = true;
    std::uint32_t kLineBaudRate = 10400;
    std::uint32_t canBaudRate = 125000;
    std::uint32_t refreshPeriodMs = 0;
    std::uint32_t mode = modeDefault;
    std::uint32_t canRequestId = 0xFFFFFFFFu;
    std::uint32_t canResponseId = 0xFFFFFFFFu;
    std::uint8_t addressByte1 = 0xFF;
    std::uint8_t addressByte2 = 0xFF;
    std::uint32_t addressWord = 255;
    std::uint32_t reservedWord = 0;
    bool extraFlag = true;
    std::string securityDll;
    bool finalFlag = true;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("protocol", self.protocol);
        visit("protocolOption", self.protocolOption);
        visit("optionFlag", self.optionFlag);
        visit("kLineBaudRate", self.kLineBaudRate);
        visit("canBaudRate", self.canBaudRate);
        visit("refreshPeriodMs", self.refreshPeriodMs);
        visit("mode", self.mode);
        visit("canRequestId", self.canRequestId);
        visit("canResponseId", self.canResponseId);
        visit("addressByte1", self.addressByte1);
        visit("addressByte2", self.addressByte2);
        visit("addressWord", self.addressWord);
        visit("reservedWord", self.reservedWord);
        visit("extraFlag", self.extraFlag);
        visit("securityDll", self.securityDll);
        visit("finalFlag", self.finalFlag);
    }
};

/// 3. The description of one parameter; the client fills the name, QOR the rest.
struct ParamInfo {
    static constexpr std::int32_t unknownIndex = -1;

    std::string name;
    std::string firstText;
    std::string secondText;
    std::string thirdText;
    double firstLimit = 0.0;
    double secondLimit = 0.0;
    std::int32_t paramIndex = unknownIndex;
    bool threeArrays = true;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("name", self.name);
        visit("firstText", self.firstText);
        visit("secondText", self.secondText);
        visit("thirdText", self.thirdText);
        visit("firstLimit", self.firstLimit);
        visit("secondLimit", self.secondLimit);
        visit("paramIndex", self.paramIndex);
        visit("threeArrays", self.threeArrays);
    }
};

/// 4. Asks QOR to end external operation.
struct Shutdown {
    static constexpr std::uint32_t firstOption = 4;
    static constexpr std::uint32_t secondOption = 2;

    std::uint32_t flags = 0;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("flags", self.flags);
    }
};

/// 5. The parameters that QOR is to read cyclically; the one list without a count.
struct SetParamList {
    wire::BareRun<std::uint32_t> paramIndices;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("paramIndices", self.paramIndices);
    }
};

/// 6. One cyclically read value, pushed by QOR. Negative indices report the state of a connect.
struct ReceiveParamData {
    std::int32_t paramIndex = -1;
    double value = 0.0;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("paramIndex", self.paramIndex);
        visit("value", self.value);
    }
};

/// 7. Reads, writes or directly controls one parameter.
struct DirectCtrl {
    static constexpr std::uint32_t readValues = 1;
    static constexpr std::uint32_t startControl = 2;
    static constexpr std::uint32_t stopControl = 3;
    static constexpr std::uint32_t writeValues = 4;
    static constexpr std::uint32_t writeDynamic = 5;

    std::uint32_t paramIndex = 0;
    std::uint32_t operation = 0;
    common::Doubles values;
    std::string name;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("paramIndex", self.paramIndex);
        visit("operation", self.operation);
        visit("values", self.values);
        visit("name", self.name);
    }
};

/// 8. Runs a numbered routine of the ECU tool.
struct EcuToolRoutine {
    static constexpr std::uint32_t clearDtc = 3;

    std::uint32_t routine = 0;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("routine", self.routine);
    }
};

/// One trouble code.
struct DtcRecord {
    std::uint32_t code = 0;
    std::uint32_t status = 0;
    std::string text1;
    std::string text2;
    std::string text3;
    std::string text4;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("code", self.code);
        visit("status", self.status);
        visit("text1", self.text1);
        visit("text2", self.text2);
        visit("text3", self.text3);
        visit("text4", self.text4);
    }
};

/// 9. The trouble codes; the request carries an empty list and the option behind it.
struct GetDtc {
    std::vector<DtcRecord> dtcs;
    bool option = false;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("dtcs", self.dtcs);
        visit("option", self.option);
    }
};

/// 10. A message box that QOR wants shown, and the choice that goes back.
struct RedirectUI {
    std::string caption;
    std::string text;
    std::uint32_t type = 0;
    std::uint32_t result = 0;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("caption", self.caption);
        visit("text", self.text);
        visit("type", self.type);
        visit("result", self.result);
    }
};

/// 11. The description of the loaded model.
struct GetHex {
    std::uint32_t word = 0;
    std::string text1;
    std::string text2;
    std::string text3;
    std::string text4;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("word", self.word);
        visit("text1", self.text1);
        visit("text2", self.text2);
        visit("text3", self.text3);
        visit("text4", self.text4);
    }
};

/// 12. The data of one parameter as three arrays. Purely positional: the first array on the wire
/// is the first array of the host's calls.
struct StaticParam {
    static constexpr std::uint32_t readArrays = 1;
    static constexpr std::uint32_t writeArrays = 2;

    std::uint32_t paramIndex = 0;
    std::uint32_t operation = 0;
    common::Doubles first;
    common::Doubles second;
    common::Doubles third;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("paramIndex", self.paramIndex);
        visit("operation", self.operation);
        visit("first", self.first);
        visit("second", self.second);
        visit("third", self.third);
    }
};

/// 14. Selects the ECU memory page.
struct EcuSegment {
    std::uint32_t word = 1;
    std::string segment;
    bool flag = false;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("word", self.word);
        visit("segment", self.segment);
        visit("flag", self.flag);
    }
};

/// 15. One KWP request, and its answer in the same fields.
struct ExecKwp {
    std::uint32_t channel = 1;
    std::uint32_t service = 0;
    std::string data;
    std::uint32_t timeoutMs = 0;
    bool failed = false;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("channel", self.channel);
        visit("service", self.service);
        visit("data", self.data);
        visit("timeoutMs", self.timeoutMs);
        visit("failed", self.failed);
    }
};

/// 16. Opens the CAN bus channel.
struct CanBusConnect {
    std::uint32_t busMode = 0;
    std::uint32_t busParam = 250000;
    bool firstFlag = true;
    bool secondFlag = false;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("busMode", self.busMode);
        visit("busParam", self.busParam);
        visit("firstFlag", self.firstFlag);
        visit("secondFlag", self.secondFlag);
    }
};

/// One CAN identifier and its value.
struct CanBusItem {
    std::uint32_t canId = 0;
    std::int32_t value = 0;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("canId", self.canId);
        visit("value", self.value);
    }
};

/// 17. CAN values: the client fills the identifiers, QOR answers with the values.
struct CanBusData {
    std::vector<CanBusItem> items;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("items", self.items);
    }
};

/// 18. Several parameters in one exchange; the three lists run in the same order.
struct ReadTogether {
    std::vector<std::uint32_t> paramIndices;
    std::vector<std::vector<double>> values;
    std::vector<std::string> names;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("paramIndices", self.paramIndices);
        visit("values", self.values);
        visit("names", self.names);
    }
};

/// 19. One CAN message to send.
struct CanBusSend {
    std::uint32_t firstNumber = 0;
    std::uint32_t secondNumber = 0;
    std::string data;

    template <class Self, class Visitor>
    static void fields(Self& self, Visitor&& visit) {
        visit("firstNumber", self.firstNumber);
        visit("secondNumber", self.secondNumber);
        visit("data", self.data);
    }
};

}  // namespace protocol
