#include "WireText.h"

#include <cstring>
#include <functional>
#include <sstream>

namespace {

/// Takes fields off the front of a payload and writes them as text.
class Fields {
public:
    Fields(const std::string& payload, std::ostream& out) : rest_(payload), out_(out) {}

    std::uint32_t word() {
        std::uint32_t value = 0;
        take(&value, sizeof value);
        return value;
    }
    std::string text() {
        std::string value(word(), '\0');
        if (value.size() > rest_.size()) value.resize(rest_.size());
        take(&value[0], value.size());
        return value;
    }
    double number() {
        double value = 0;
        take(&value, sizeof value);
        return value;
    }

    Fields& say(const char* words) {
        out_ << words;
        return *this;
    }
    Fields& unsignedWord() {
        out_ << word();
        return *this;
    }
    Fields& signedWord() {
        out_ << static_cast<std::int32_t>(word());
        return *this;
    }
    Fields& hexWord() {
        out_ << std::hex << std::uppercase << word() << std::dec;
        return *this;
    }
    Fields& quoted() {
        out_ << '\'' << text() << '\'';
        return *this;
    }
    Fields& bytes() {
        const std::string value = text();
        for (const char& byte : value) {
            char hex[4];
            std::snprintf(hex, sizeof hex, "%02X",
                          static_cast<unsigned>(static_cast<unsigned char>(byte)));
            out_ << (&byte == value.data() ? "" : " ") << hex;
        }
        return *this;
    }
    Fields& real() {
        out_ << number();
        return *this;
    }
    /// A counted sequence in brackets; `element` writes one.
    Fields& sequence(const std::function<void(Fields&)>& element) {
        const std::uint32_t count = word();
        out_ << '[';
        for (std::uint32_t i = 0; i < count && !rest_.empty(); ++i) {
            if (i > 0) out_ << ' ';
            element(*this);
        }
        out_ << ']';
        return *this;
    }
    Fields& reals() {
        return sequence([](Fields& fields) { fields.real(); });
    }
    Fields& words() {
        return sequence([](Fields& fields) { fields.unsignedWord(); });
    }
    Fields& texts() {
        return sequence([](Fields& fields) { fields.quoted(); });
    }

    std::size_t left() const { return rest_.size(); }

private:
    void take(void* target, std::size_t size) {
        const std::size_t there = size < rest_.size() ? size : rest_.size();
        std::memcpy(target, rest_.data(), there);
        rest_.erase(0, there);
    }

    std::string rest_;
    std::ostream& out_;
};

void startEdit(Fields& f) {
    f.say("StartEdit stage=").unsignedWord().say(" mode=").unsignedWord().say(" ").quoted();
    f.say(" ").signedWord().say(" ").texts().words().say(" ").texts().words().say(" ");
    f.sequence([](Fields& entry) { entry.quoted().say(":").quoted(); });
}

void kwpConnect(Fields& f) {
    f.say("KwpConnect protocol=").unsignedWord().say(" ").unsignedWord().say(" ").unsignedWord();
    f.say(" ").unsignedWord().say(" ").unsignedWord().say(" period=").unsignedWord();
    f.say(" mode=").unsignedWord().say(" ").hexWord().say(" ").hexWord();
    for (int i = 0; i < 5; ++i) f.say(" ").unsignedWord();
    f.say(" ").quoted().say(" ").unsignedWord();
}

void paramInfo(Fields& f) {
    f.say("GetParamInfo ").quoted();
    for (int i = 0; i < 3; ++i) f.say(" ").quoted();
    f.say(" ").real().say("..").real().say(" ").signedWord().say(" arrays=").unsignedWord();
}

void directCtrl(Fields& f) {
    f.say("DirectCtrl ").unsignedWord().say(" op=").unsignedWord().say(" ").reals().say(" ");
    f.quoted();
}

void getDtc(Fields& f) {
    f.say("GetDtc ").sequence([](Fields& code) {
        code.hexWord().say("/").unsignedWord();
        for (int i = 0; i < 4; ++i) code.say(" ").quoted();
    });
    f.say(" ").unsignedWord();
}

void staticParam(Fields& f) {
    f.say("StaticParam ").unsignedWord().say(" op=").unsignedWord();
    for (int i = 0; i < 3; ++i) f.say(" ").reals();
}

void execKwp(Fields& f) {
    f.say("ExecKwp channel=").unsignedWord().say(" ").hexWord().say(" [").bytes();
    f.say("] t=").unsignedWord().say(" failed=").unsignedWord();
}

void setParamList(Fields& f) {
    f.say("SetParamList");
    while (f.left() >= 4) f.say(" ").unsignedWord();
}

using Say = void (*)(Fields&);

constexpr Say sayings[] = {
    [](Fields& f) { f.say("Ping ").unsignedWord(); },
    startEdit,
    kwpConnect,
    paramInfo,
    [](Fields& f) { f.say("Shutdown ").unsignedWord(); },
    setParamList,
    [](Fields& f) { f.say("ReceiveParamData ").signedWord().say(" ").real(); },
    directCtrl,
    [](Fields& f) { f.say("EcuToolRoutine ").unsignedWord(); },
    getDtc,
    [](Fields& f) {
        f.say("RedirectUI ").quoted().say(" ").quoted().say(" ").unsignedWord();
        f.say(" ").unsignedWord();
    },
    [](Fields& f) {
        f.say("GetHex ").unsignedWord();
        for (int i = 0; i < 4; ++i) f.say(" ").quoted();
    },
    staticParam,
    [](Fields& f) { f.say("13?"); },
    [](Fields& f) {
        f.say("EcuSegment ").unsignedWord().say(" ").quoted().say(" ").unsignedWord();
    },
    execKwp,
    [](Fields& f) {
        f.say("CanBusConnect ").unsignedWord();
        for (int i = 0; i < 3; ++i) f.say(" ").unsignedWord();
    },
    [](Fields& f) {
        f.say("CanBusData ").sequence([](Fields& item) { item.hexWord().say(":").signedWord(); });
    },
    [](Fields& f) {
        f.say("ReadTogether ").words().say(" ");
        f.sequence([](Fields& values) { values.reals(); }).say(" ").texts();
    },
    [](Fields& f) {
        f.say("CanBusSend ").unsignedWord().say(" ").unsignedWord().say(" [").bytes().say("]");
    },
};

}  // namespace

std::string describe(const WireRecord& record) {
    if (record.id >= std::size(sayings)) return std::to_string(record.id) + "?";
    std::ostringstream out;
    Fields fields(record.payload, out);
    sayings[record.id](fields);
    if (fields.left() != 0) out << " +" << fields.left() << " bytes";
    return out.str();
}
