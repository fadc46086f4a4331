// The C interface as a script of calls, with a QOR behind it that does what the input says: every
// call ends, in time and with one of the numbers; nothing is written beyond a buffer, nor into one
// when the call has failed.
#include <algorithm>
#include <cstring>

#include "cinterface/Process.h"
#include "cinterface/QorControl.h"
#include "ScriptedQor.h"
#include "Target.h"
#include "Turns.h"

namespace {

constexpr const char* qorName = "/qor";
constexpr std::uint64_t longestMs = 200000;
constexpr std::uint8_t untouched = 0xA5;
constexpr int mostCalls = 40;

class Host {
public:
    explicit Host(fuzz::Input& input) : input_(input) {}
    ~Host() {
        for (const QorHandle handle : handles_) QorClose(handle);
        cinterface::forgetProcess();
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void open() {
        QorHandle handle = nullptr;
        const int cause = check(QorOpen(qorName, 100, "", &handle));
        FUZZ_REQUIRE((cause == QOR_OK) == (handle != nullptr));
        handles_.push_back(handle);
    }

    void callOne() {
        const std::uint64_t startMs = turns::nowMs();
        const std::uint32_t which = input_.below(48);
        if (which < 12)
            callLife(which);
        else if (which < 24)
            callParams(which - 12);
        else if (which < 36)
            callDiagnostics(which - 24);
        else
            callStreams(which - 36);
        FUZZ_REQUIRE(turns::nowMs() - startMs < longestMs);
    }

private:
    template <class T>
    class Buffer {
    public:
        /// In memory of its own size, so that an element too many is seen.
        explicit Buffer(fuzz::Input& input) {
            const std::uint32_t kind = input.byte();
            capacity = (kind & 1) != 0 ? 64 : kind >> 4;
            memory_.reset(new T[capacity]);
            std::memset(static_cast<void*>(memory_.get()), untouched, capacity * sizeof(T));
            elements = memory_.get();
            if ((kind & 2) != 0) elements = nullptr;
            if ((kind & 6) == 2) capacity = 0;
            if ((kind & 8) != 0) neededOrNull = nullptr;
        }

        void check(int cause) const {
            const bool isRefused = elements == nullptr && capacity != 0;
            if (isRefused) FUZZ_REQUIRE(cause != QOR_OK);
            if (cause == QOR_RESULT_TOO_LARGE && neededOrNull != nullptr)
                FUZZ_REQUIRE(needed > capacity);
            if (cause == QOR_OK && elements != nullptr && neededOrNull != nullptr)
                FUZZ_REQUIRE(needed <= capacity);
            if (cause == QOR_OK || elements == nullptr) return;
            const auto* const bytes = reinterpret_cast<const std::uint8_t*>(elements);
            for (std::size_t i = 0; i < capacity * sizeof(T); ++i)
                FUZZ_REQUIRE(bytes[i] == untouched);
        }

        T* elements = nullptr;
        unsigned int capacity = 0;
        unsigned int needed = 0;
        unsigned int* neededOrNull = &needed;

    private:
        std::unique_ptr<T[]> memory_;
    };

    static int check(int cause) {
        FUZZ_REQUIRE(cause >= QOR_OK && cause <= QOR_WRONG_ORDER);
        FUZZ_REQUIRE(QorLastCause() == cause);
        FUZZ_REQUIRE(std::strncmp(QorCauseName(cause), "QOR_", 4) == 0);
        unsigned int needed = 0;
        FUZZ_REQUIRE(QorLastSentence(nullptr, 0, &needed) == QOR_OK && needed >= 1);
        FUZZ_REQUIRE((cause == QOR_OK) == (needed == 1));
        return cause;
    }

    template <class T, class Call>
    int withBuffer(Call call) {
        Buffer<T> buffer(input_);
        const int cause = call(buffer.elements, buffer.capacity, buffer.neededOrNull);
        buffer.check(cause);
        return cause;
    }

    /// Mostly an open one; else a closed one, or any number.
    QorHandle handle() {
        const std::uint32_t which = input_.byte();
        if (which >= 0xF8) return reinterpret_cast<QorHandle>(std::uintptr_t{input_.word()});
        return which < 0xC0 ? handles_.back() : handles_[which % handles_.size()];
    }
    QorStream stream() {
        return input_.below(8) == 7 ? reinterpret_cast<QorStream>(std::uintptr_t{input_.word()})
                                    : stream_;
    }
    unsigned int timeoutMs() {
        static constexpr unsigned int all[] = {300, 50, 1, 0, QOR_TRANSPORT_DEFAULT, 0x80000000u};
        return all[input_.below(6)];
    }
    /// A connect lasts as long as it is given while QOR says nothing of its end: what has a meaning
    /// of its own elsewhere is weeks there.
    unsigned int connectTimeoutMs() { return std::min(timeoutMs(), 300u); }
    /// A name, at times null, at times any bytes.
    const char* text() {
        static constexpr const char* known[] = {"a",     "Map",      "",
                                                nullptr, "\xC3\xA4", "\xE2\x82\xAC"};
        const std::uint32_t which = input_.below(8);
        if (which < 6) return known[which];
        text_ = input_.text();
        return text_.c_str();
    }
    const char* const* names(unsigned int& count) {
        count = input_.below(4);
        for (std::size_t i = 0; i < 3; ++i) names_[i] = input_.below(8) == 0 ? nullptr : "Map";
        return input_.below(16) == 0 ? nullptr : names_;
    }
    template <class Structure>
    unsigned int sizeOf() {
        return input_.below(8) == 7 ? input_.word() : static_cast<unsigned int>(sizeof(Structure));
    }

    void callLife(std::uint32_t which);
    void callConnect(std::uint32_t which);
    void callParams(std::uint32_t which);
    void callWrites(std::uint32_t which);
    void callDiagnostics(std::uint32_t which);
    void callCan(std::uint32_t which);
    void callResults(std::uint32_t which);
    void callStreams(std::uint32_t which);
    void callBoxes(std::uint32_t which);

    fuzz::Input& input_;
    std::vector<QorHandle> handles_;
    QorStream stream_ = nullptr;
    std::string text_;
    const char* names_[3] = {};
};

void Host::callLife(std::uint32_t which) {
    int flag = 0;
    switch (which) {
        case 0:
            if (handles_.size() < 3) open();
            break;
        case 1:
            check(QorClose(handle()));
            break;
        case 2:
            check(QorIsEcuOnline(handle(), input_.below(4) == 0 ? nullptr : &flag));
            break;
        case 3:
            check(QorIsConnecting(handle(), &flag));
            check(QorSetTcpNoDelay(handle(), flag));
            break;
        case 4:
            check(withBuffer<char>([&](char* path, unsigned int capacity, unsigned int* needed) {
                return QorGetQorExecutablePath(handle(), path, capacity, needed);
            }));
            break;
        case 5:
            check(QorPingQor(handle(), timeoutMs()));
            break;
        case 6:
            check(QorSetEcuSegment(handle(), text(), 1));
            break;
        default:
            callConnect(which - 7);
    }
}

void Host::callConnect(std::uint32_t which) {
    QorEcuConnect settings = {};
    settings.size = sizeof settings;
    QorEcuConnectDefaults(&settings);
    settings.size = sizeOf<QorEcuConnect>();
    settings.securityDll = text();
    QorConnectProgress progress = {};
    progress.size = sizeOf<QorConnectProgress>();
    QorModelDescription model = {};
    const auto* const given = input_.below(2) == 0 ? nullptr : &settings;
    switch (which) {
        case 0:
            check(
                QorConnect(handle(), given, static_cast<int>(input_.below(5)), connectTimeoutMs()));
            break;
        case 1:
            check(QorConnectStart(handle(), given, static_cast<int>(input_.below(5))));
            break;
        case 2:
            check(QorConnectPoll(handle(), &progress));
            check(QorConnectCancel(handle()));
            break;
        case 3:
            QorConnectWait(handle(), 500);
            withBuffer<char>([&](char* reason, unsigned int capacity, unsigned int* needed) {
                return QorConnectReason(handle(), reason, capacity, needed);
            });
            break;
        default:
            model.size = sizeOf<QorModelDescription>();
            model.model = text();
            model.extraKeys = names(model.extraCount);
            model.extraValues = model.extraKeys;
            check(QorOpenModel(handle(), &model));
    }
}

void Host::callParams(std::uint32_t which) {
    int flag = 0;
    unsigned int count = 0;
    const auto doubles = [&](auto call) { return check(withBuffer<double>(call)); };
    switch (which) {
        case 0:
            check(QorGetParamDescription(handle(), text(), &flag));
            break;
        case 1:
        case 2:
            doubles([&](double* out, unsigned int capacity, unsigned int* needed) {
                return QorGetParamData(handle(), text(), timeoutMs(), out, capacity, needed);
            });
            break;
        case 3:
            check(withBuffer<unsigned char>(
                [&](unsigned char* out, unsigned int capacity, unsigned int* needed) {
                    return QorGetParamDataAsString(handle(), text(), timeoutMs(), out, capacity,
                                                   needed);
                }));
            break;
        case 4:
        case 5:
            doubles([&](double* out, unsigned int capacity, unsigned int* needed) {
                const char* const* const wanted = names(count);
                unsigned int counts[3] = {};
                return QorGetParamDataAtOnce(handle(), wanted, count, timeoutMs(), out, capacity,
                                             needed, counts);
            });
            break;
        default:
            callWrites(which - 6);
    }
}

void Host::callWrites(std::uint32_t which) {
    const double values[] = {1, 2, 3};
    switch (which) {
        case 0:
            check(QorSetParamData(handle(), text(), values, input_.below(4), nullptr,
                                  input_.below(2), values, input_.below(4), timeoutMs()));
            break;
        case 1:
            check(QorSetDynamicData(handle(), text(), "1", timeoutMs()));
            break;
        case 2:
            check(QorStartDirectCtrl(handle(), text(), timeoutMs()));
            break;
        case 3:
            check(QorStopDirectCtrl(handle(), text(), timeoutMs()));
            break;
        default:
            callResults(which - 4);
    }
}

void Host::callResults(std::uint32_t which) {
    if (which == 0)
        check(withBuffer<double>([&](double* out, unsigned int capacity, unsigned int* needed) {
            return QorResultValues(handle(), input_.byte(), out, capacity, needed);
        }));
    else
        check(withBuffer<char>([&](char* out, unsigned int capacity, unsigned int* needed) {
            return QorResultText(handle(), input_.byte(), input_.byte(), out, capacity, needed);
        }));
}

void Host::callDiagnostics(std::uint32_t which) {
    const std::string data(input_.take(input_.below(9)));
    const auto* const bytes = reinterpret_cast<const unsigned char*>(data.data());
    const auto length = static_cast<unsigned int>(data.size());
    int failed = 0;
    switch (which) {
        case 0:
            check(QorClearDtc(handle(), timeoutMs()));
            break;
        case 1:
        case 2:
            check(withBuffer<QorDtc>([&](QorDtc* out, unsigned int capacity, unsigned int* needed) {
                return QorGetDtcByStatus(handle(), timeoutMs(), out, capacity, needed);
            }));
            break;
        case 3:
        case 4:
            check(withBuffer<unsigned char>(
                [&](unsigned char* out, unsigned int capacity, unsigned int* needed) {
                    return QorSendKwpCommand(handle(), 1, bytes, length, timeoutMs(), out, capacity,
                                             needed, &failed);
                }));
            break;
        case 5:
            check(QorSendCanBusMsg(handle(), 1, 2, bytes, length, timeoutMs()));
            break;
        case 6:
            check(withBuffer<QorDtc>([&](QorDtc* out, unsigned int capacity, unsigned int* needed) {
                return QorResultDtcs(handle(), out, capacity, needed);
            }));
            break;
        default:
            callCan(which - 7);
    }
}

void Host::callCan(std::uint32_t which) {
    const QorCanBusItem wanted[] = {{1, 2}, {3, 4}};
    QorCanBusConnect bus = {sizeOf<QorCanBusConnect>(), 500000, 1, 0};
    switch (which) {
        case 0:
        case 1:
            check(withBuffer<QorCanBusItem>(
                [&](QorCanBusItem* out, unsigned int capacity, unsigned int* needed) {
                    return QorGetCanBusData(handle(), wanted, input_.below(3), timeoutMs(), out,
                                            capacity, needed);
                }));
            break;
        case 2:
            check(QorConnectCanBus(handle(), &bus, 1));
            break;
        case 3:
            check(withBuffer<QorCanBusItem>(
                [&](QorCanBusItem* out, unsigned int capacity, unsigned int* needed) {
                    return QorResultCanBusItems(handle(), out, capacity, needed);
                }));
            break;
        default:
            check(withBuffer<unsigned char>(
                [&](unsigned char* out, unsigned int capacity, unsigned int* needed) {
                    return QorResultBytes(handle(), out, capacity, needed);
                }));
    }
}

void Host::callStreams(std::uint32_t which) {
    unsigned int count = 0;
    double timeMs = 0;
    switch (which) {
        case 0:
        case 1: {
            const char* const* const wanted = names(count);
            QorStream stream = nullptr;
            if (check(QorStartParamRead(handle(), wanted, count, input_.below(5), &stream)) ==
                QOR_OK)
                stream_ = stream;
            break;
        }
        case 2:
        case 3:
            check(withBuffer<QorSample>(
                [&](QorSample* out, unsigned int capacity, unsigned int* needed) {
                    return QorReadParamStream(stream(), out, capacity, needed, input_.byte());
                }));
            break;
        case 4:
            check(QorStopParamRead(stream()));
            break;
        case 5:
            check(QorStartDtcRead(handle(), timeoutMs(), input_.byte()));
            break;
        case 6:
            check(withBuffer<QorDtc>([&](QorDtc* out, unsigned int capacity, unsigned int* needed) {
                return QorReadDtcStream(handle(), input_.byte(), out, capacity, needed, &timeMs,
                                        &count);
            }));
            break;
        case 7:
            check(QorStopDtcRead(handle()));
            break;
        default:
            callBoxes(which - 8);
    }
}

void QOR_CALL noteLine(void* user, int, const char* line) {
    FUZZ_REQUIRE(user != nullptr && line != nullptr);
}

void QOR_CALL noteProgress(void* user, int) {
    FUZZ_REQUIRE(user != nullptr);
}

void Host::callBoxes(std::uint32_t which) {
    QorMessageBox box = {};
    switch (which) {
        case 0:
            check(QorSetMessageBoxPolicy(handle(), static_cast<int>(input_.below(4)),
                                         input_.below(9), input_.byte()));
            break;
        case 1:
            box.size = sizeOf<QorMessageBox>();
            check(withBuffer<char>([&](char* out, unsigned int capacity, unsigned int* needed) {
                return QorNextMessageBox(handle(), &box, out, capacity, needed, nullptr, 0,
                                         nullptr);
            }));
            break;
        case 2:
            check(QorAnswerMessageBox(handle(), input_.below(4), input_.below(9)));
            break;
        default:
            check(QorSetLog(handle(), input_.below(2) == 0 ? noteLine : nullptr, this));
            check(QorSetProgress(handle(), noteProgress, this));
    }
}

void play(std::string_view bytes) {
    fuzz::Input input(bytes);
    fuzz::ScriptedQor qor(qorName, input);
    Host host(input);
    host.open();
    for (int calls = 0; calls < mostCalls && !input.isEmpty(); ++calls) host.callOne();
}

void tryOne(std::string_view bytes) {
    turns::execute([bytes] { play(bytes); });
}

const fuzz::Registered registered({"cinterface", tryOne});

}  // namespace
