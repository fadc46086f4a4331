// A tour of QorControlFacade.dll in C++17: connects an ECU, reads, writes, is refused, streams,
// reads and clears trouble codes. The argument is QOR's settings file. What each step saw goes to
// standard output; the exit code is 0 if all went as it should.
//
// This class is for programs of the very compiler that built the library. A C++ host of any other
// compiler uses QorControl.h: tour.c shows how.
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "qorcontrol/Outcome.h"
#include "qorcontrol/Version.h"
#include "QorControlFacade.h"

namespace {

using Values = std::vector<QorControlFacade::ParamValue>;

// Why this thread's last operation failed. Ask at once: the next one has a cause of its own.
void printCause() {
    const qorcontrol::Outcome outcome = qorcontrol::lastOutcome();
    std::printf("  cause: %d\n", static_cast<int>(outcome.cause));
    std::printf("  sentence: %s\n", outcome.sentence.c_str());
    std::printf("  check: %s\n", outcome.check.c_str());
}

bool failedWith(qorcontrol::Cause cause) {
    return qorcontrol::lastOutcome().cause == cause;
}

// What a step came to.
bool worked(const char* step, bool good) {
    std::printf("%s: %s\n", step, good ? "ok" : "failed");
    if (!good) printCause();
    return good;
}

// The library calls this on a thread of its own while a connect runs. With it connect waits for the
// end; cancel() is for a button, or for a thread that looks at the clock.
class Monitor final : public IProgressMonitor {
public:
    void cancel() { cancelled_ = true; }

    bool isCancelled() override { return cancelled_; }
    void reportError(const std::string&, unsigned int) override {}  // lastOutcome tells it, too
    void reserved1() override {}  // never called; neither are the others
    void reserved2() override {}
    void reserved3() override {}
    void reserved4() override {}
    void reserved5() override {}
    void reserved6() override {}
    void reserved8() override {}
    void reserved9() override {}

private:
    std::atomic<bool> cancelled_{false};
};

// What QOR itself would use. A field that is left out of this travels as 0.
QorControlFacade::EcuConnect ecuOverKLine() {
    QorControlFacade::EcuConnect ecu = {};
    ecu.protocol = ecu.protocolOption = 1;
    ecu.optionFlag = ecu.extraFlag = ecu.finalFlag = true;
    ecu.kLineBaudRate = 10400;
    ecu.canBaudRate = 125000;
    ecu.refreshPeriodMs = 100;
    ecu.canRequestId = ecu.canResponseId = 0xFFFFFFFF;  // none
    ecu.addressByte1 = ecu.addressByte2 = 0xFF;
    ecu.addressWord = 255;
    return ecu;
}

bool connectEcu(const QorControlFacade& qor, Monitor& monitor) {
    return worked("connect",
                  qor.connect(ecuOverKLine(), QorControlFacade::EcuConnect::Default, &monitor));
}

bool readAndWrite(const QorControlFacade& qor) {
    std::vector<double> values;
    if (!qor.getParamData("EngineSpeed", values, 1000) || values.empty())
        return worked("read", false);
    std::printf("read: EngineSpeed = %.2f\n", values[0]);

    const std::string target = "IdleSpeedTarget";
    if (!worked("write", qor.setParamData(target, {900}, {}, {}, 1000))) return false;
    // This read asks QOR itself; getParamData may tell what was just written, from the cache.
    std::vector<std::vector<double>> fresh;
    if (!qor.getParamDataAtOnce({target}, fresh, 1000)) return worked("read back", false);
    if (fresh.size() != 1 || fresh[0].empty()) return false;
    std::printf("read back: %s = %.2f\n", target.c_str(), fresh[0][0]);
    return fresh[0][0] == 900;
}

// What must not work, and what the library says about it.
bool beRefused(const QorControlFacade& qor) {
    const double tooMuch = 99999;
    std::printf("refused: IdleSpeedTarget = %.0f\n", tooMuch);
    bool good = !qor.setParamData("IdleSpeedTarget", {tooMuch}, {}, {}, 1000) &&
                failedWith(qorcontrol::Cause::refused);
    printCause();
    std::vector<double> values;
    std::printf("refused: NoSuchName\n");
    good = !qor.getParamData("NoSuchName", values, 1000) &&
           failedWith(qorcontrol::Cause::unknownName) && good;
    printCause();
    return good;
}

// Values as they come, for a second. The library tells them more often than they change: only what
// is new is shown. A full queue loses what is unread in it. It must live until QOR has answered a
// ping after the stop: before, the library may still be filling it.
bool streamValues(const QorControlFacade& qor, ThreadSafeQueue<Values>& queue) {
    const ULONGLONG start = GetTickCount64();
    if (!worked("stream", qor.startParamRead(&queue, {"EngineSpeed", "OilPressure"}))) return false;
    std::map<std::string, double> last;
    while (GetTickCount64() < start + 1000) {
        Values batch;
        if (!queue.pop(batch, 100)) continue;
        for (const auto& value : batch) {
            const double present = value.values[0];
            if (last.count(value.name) != 0 && last[value.name] == present) continue;
            last[value.name] = present;
            std::printf("value: %s = %.2f after %.0f ms\n", value.name.c_str(), present,
                        static_cast<double>(GetTickCount64() - start));
        }
    }
    return worked("stream end", qor.stopParamRead(&queue)) && qor.pingQor(2000) && !last.empty();
}

bool readCodes(const QorControlFacade& qor, std::vector<QorControlFacade::DtcDescription>& codes) {
    if (!qor.getDtcByStatus(codes, 1000)) return worked("trouble codes", false);
    std::printf("trouble codes: %u\n", static_cast<unsigned>(codes.size()));
    for (const auto& code : codes)
        std::printf("  0x%04X status %u, %s, %s, %s, %s\n", code.code, code.status,
                    code.text1.c_str(), code.text2.c_str(), code.text3.c_str(), code.text4.c_str());
    return true;
}

bool goRound(const QorControlFacade& qor, Monitor& monitor, ThreadSafeQueue<Values>& queue) {
    std::vector<QorControlFacade::DtcDescription> codes;
    return worked("ping", qor.pingQor(10000)) &&  // QOR may still be starting
           connectEcu(qor, monitor) && readAndWrite(qor) && beRefused(qor) &&
           streamValues(qor, queue) && readCodes(qor, codes) &&
           worked("clear", qor.clearDtc(1000)) && readCodes(qor, codes) && codes.empty();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: tour SETTINGS\n");
        return 2;
    }
    std::printf("library: %s\n", QOR_VERSION_TEXT);
    // What the library uses must outlive it.
    Monitor monitor;
    ThreadSafeQueue<Values> queue(100);
    QorControlFacade qor(argv[1], nullptr, 100, "");  // returns at once, QOR starts
    worked("open", true);
    const bool good = goRound(qor, monitor, queue);
    qor.shutdown();  // the end; also of QOR, if the settings name its program
    worked("close", true);
    return good ? 0 : 1;
}
