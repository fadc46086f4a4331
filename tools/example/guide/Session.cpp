#include "Session.h"

#include <windows.h>

#include "qorcontrol/Outcome.h"
#include "qorcontrol/Waiting.h"

namespace guide {

// [life]
// From start to end. The objects that the library uses are declared before the facade, so that
// they outlive it.
bool measureOnce(const std::string& settingsPath, const std::string& hostPath, double& speed) {
    const FileLog log(stdout);
    ConnectWindow window;
    QorControlFacade qor(settingsPath, &log, 200, hostPath);  // returns at once, QOR starts
    if (!qor.pingQor(6000)) return false;                     // QOR is up, or 12 s have passed
    if (!connectEcu(qor, window).empty()) return false;
    std::vector<double> values;
    if (!qor.getParamData("EngineSpeed", values, 1000) || values.empty()) return false;
    speed = values.front();
    return true;  // the destructor ends QOR too, if the settings name its program
}
// [/life]

// [pingQor]
// Waits for a QOR that is still starting, in steps of 2 s for a "cancel" button. (Many more pings
// would fill the queue of the requests.) If QOR cannot be started this soon returns.
bool awaitQor(const QorControlFacade& qor, const std::atomic<bool>& cancelled) {
    for (int tries = 0; tries < 6 && !cancelled; ++tries)
        if (qor.pingQor(1000)) return true;
    return false;
}
// [/pingQor]

// [EcuConnect]
// QOR's own values. Start from `{}` and set what your ECU needs: a field that is left out
// travels as 0, not as QOR's value.
QorControlFacade::EcuConnect ecuOverKLine() {
    QorControlFacade::EcuConnect ecu = {};
    ecu.protocol = ecu.protocolOption = 1;
    ecu.optionFlag = ecu.extraFlag = ecu.finalFlag = true;
    ecu.kLineBaudRate = 10400;
    ecu.canBaudRate = 125000;
    ecu.refreshPeriodMs = 200;
    ecu.canRequestId = ecu.canResponseId = 0xFFFFFFFF;  // none
    ecu.addressByte1 = ecu.addressByte2 = 0xFF;
    ecu.addressWord = 255;
    return ecu;
}
// [/EcuConnect]

// [connect]
// Empty: the ECU is online. Else why not.
std::string connectEcu(const QorControlFacade& qor, ConnectWindow& window) {
    if (qor.connect(ecuOverKLine(), QorControlFacade::EcuConnect::Default, &window)) return "";
    const std::string reason = window.reason();
    return reason.empty() ? "QOR did not take the request" : reason;
}
// [/connect]

// [isEcuOnline]
// A connect without a monitor is only posted. Its end shows in isEcuOnline alone.
bool connectInBackground(const QorControlFacade& qor, unsigned int patienceMs) {
    if (!qor.connect(ecuOverKLine(), QorControlFacade::EcuConnect::Default, nullptr)) return false;
    const ULONGLONG end = GetTickCount64() + patienceMs;
    while (!qor.isEcuOnline() && GetTickCount64() < end) Sleep(50);
    return qor.isEcuOnline();
}
// [/isEcuOnline]

// [isConnecting]
// For a status line that is drawn by another thread than the one that connects.
const char* stateOf(const QorControlFacade& qor) {
    if (qor.isConnecting()) return "connecting ...";
    return qor.isEcuOnline() ? "online" : "no ECU";
}
// [/isConnecting]

// [setEcuSegment]
// Whether the working page holds another value than the reference page. getParamDataAtOnce reads
// past the value cache, which knows no pages. The working page is selected again in the end.
bool isChanged(const QorControlFacade& qor, const std::string& name, bool& changed) {
    std::vector<std::vector<double>> reference, working;
    const bool wasRead =
        qor.setEcuSegment(QorControlFacade::getEdcRomSegmentName(), false, nullptr) &&
        qor.getParamDataAtOnce({name}, reference, 1000);
    if (!qor.setEcuSegment(QorControlFacade::getEdcRamSegmentName(), true, nullptr)) return false;
    if (!wasRead || !qor.getParamDataAtOnce({name}, working, 1000)) return false;
    changed = working != reference;
    return true;
}
// [/setEcuSegment]

// [openModel]
// True: QOR answers again after the model was handed to it. What it exports comes later, so an
// old file must not be taken for the new one.
bool openModel(const QorControlFacade& qor, const std::string& model, const std::string& hex) {
    DeleteFileA("c:\\qor_exp.sde");
    QorControlFacade::ModelDescription files = {};
    files.modelType = 1;
    files.model = model;
    files.hex = hex;
    return qor.openModel(files) && qor.pingQor(50000);  // opening may hold the agent for 98 s
}
// [/openModel]

// [whyNoModel]
// Opens a model and waits for it. Empty if QOR has opened it, otherwise why not.
std::string whyNoModel(const QorControlFacade& qor,
                       const QorControlFacade::ModelDescription& files) {
    if (qorcontrol::openModelAndWait(qor, files)) return "";
    const qorcontrol::Outcome outcome = qorcontrol::lastOutcome();  // of this thread's last call
    return outcome.sentence + " " + outcome.check;
}
// [/whyNoModel]

// [connectCanBus]
bool openCanBus(const QorControlFacade& qor) {
    QorControlFacade::CanBusConnect bus = {};
    bus.busParam = 500000;  // bit/s
    bus.firstFlag = true;
    if (!qor.connectCanBus(bus, QorControlFacade::EcuConnect::Default)) return false;
    QorControlFacade::CanBusData known = {{{0x201, 0}}};
    return qor.getCanBusData(known, 6000);  // the first read tells whether the bus is open
}
// [/connectCanBus]

// [getQorExecutablePath]
// Where QOR lies; empty after 3 s if the settings do not say so.
std::string folderOfQor(QorControlFacade& qor) {
    const std::string path = qor.getQorExecutablePath();
    return path.substr(0, path.find_last_of('\\') + 1);
}
// [/getQorExecutablePath]

// [segment names]
const std::string& pageName(bool working) {
    return working ? QorControlFacade::getEdcRamSegmentName()   // "WorkingPage"
                   : QorControlFacade::getEdcRomSegmentName();  // "ReferencePage"
}
// [/segment names]

// [shutdown]
// True: the agent thread has ended and touches nothing of the host's any more. False: it was busy
// and was let go, so the host's queues, and the monitor of a connect, must stay for good.
bool shutDown(QorControlFacade& qor) {
    const ULONGLONG start = GetTickCount64();
    qor.shutdown();
    return GetTickCount64() - start < 5000;
}
// [/shutdown]

}  // namespace guide
