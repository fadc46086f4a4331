#include <iterator>

#include "operations/Operation.h"

namespace qorctl {
namespace {

constexpr Operation table[] = {
    {"connect", "Connect the ECU (connect)",
     "Ctrl-C cancels. What is not said is as QOR itself would have it.\n\n"
     "Example:  qorctl connect settings.ini --type security --security-dll seedkey.dll",
     false, &declareConnect},
    {"ping", "Ask whether QOR answers (pingQor)", "Example:  qorctl ping settings.ini", false,
     &declarePing},
    {"status", "Tell whether an ECU is online, and the names of the pages (isEcuOnline, ...)",
     "Example:  qorctl status settings.ini", false, &declareStatus},
    {"path", "Tell the path of QOR's program (getQorExecutablePath)",
     "Example:  qorctl path settings.ini", false, &declarePath},
    {"segment", "Select the memory page to work on (setEcuSegment)",
     "Example:  qorctl segment settings.ini rom", true, &declareSegment},
    {"open-model", "Let QOR open a model and wait for what it exports (openModel)",
     "QOR lets the ECU go first. Fails if QOR does not open the model. Of what it exports then\n"
     "nothing is told but what comes within --export-wait.\n\n"
     "Example:  qorctl open-model settings.ini engine.mdl --hex engine.hex --export-wait 5",
     false, &declareOpenModel},

    {"list", "List parameters with their units and limits (getParamDescription)",
     "QOR tells no names: without --names they are those of the model that the settings name for "
     "the\n"
     "simulated QOR, or of engine.json beside its program. Units, groups and meanings are QOR's;\n"
     "limits are the model's, for the library is not told QOR's.\n\n"
     "Example:  qorctl list settings.ini --names names.txt --json",
     true, &declareList},
    {"describe", "Describe parameters (getParamDescription)",
     "Example:  qorctl describe settings.ini EngineSpeed IgnitionMap", true, &declareDescribe},
    {"get", "Read parameters one by one (getParamData)",
     "Example:  qorctl get settings.ini EngineSpeed IdleSpeedTarget --json", true, &declareGet},
    {"get-string", "Read parameters that are texts (getParamDataAsString)",
     "Numbers are read as characters, too, with a warning.\n\n"
     "Example:  qorctl get-string settings.ini VehicleIdentNumber",
     true, &declareGetString},
    {"get-at-once", "Read parameters in one exchange (getParamDataAtOnce)",
     "Example:  qorctl get-at-once settings.ini EngineSpeed EngineLoad", true, &declareGetAtOnce},
    {"set", "Write a parameter (setParamData)",
     "Values may be separated by blanks or commas; nan and inf are values too; put --\n"
     "before NAME if a value begins with - and no digit follows (-inf). An actuator is "
     "written\n"
     "under direct control only: use a batch.\n\n"
     "Examples: qorctl set settings.ini IdleSpeedTarget 900\n"
     "          qorctl set settings.ini DwellTime 7,5,4,3,2 --second 6,8,10,13,16",
     true, &declareSet},
    {"set-dynamic", "Write a value as text, in QOR's own notation (setDynamicData)",
     "Example:  qorctl set-dynamic settings.ini CylinderCount 6", true, &declareSetDynamic},
    {"start-control", "Take an actuator under direct control (startDirectCtrl)",
     "Without --hold it is held until Ctrl-C; in a batch until stop-control or the batch's end. "
     "To\n"
     "write meanwhile use a batch. Whatever happens it is given back; exit code 4: that failed.\n\n"
     "Example:  qorctl start-control settings.ini CoolingFan --hold 10",
     true, &declareStartControl},
    {"stop-control", "Give an actuator back (stopDirectCtrl)",
     "Connecting the ECU gives its actuators back already, and QOR may refuse this then: it\n"
     "belongs into a batch, or behind --no-connect.\n\n"
     "Example:  qorctl stop-control settings.ini CoolingFan --no-connect",
     true, &declareStopControl},

    {"read-dtc", "Read the trouble codes (getDtcByStatus)",
     "Example:  qorctl read-dtc settings.ini --json", true, &declareReadDtc},
    {"clear-dtc", "Clear the trouble codes (clearDtc)", "Example:  qorctl clear-dtc settings.ini",
     true, &declareClearDtc},
    {"kwp", "Send a KWP request (sendKwpCommand)",
     "Fails if the ECU reports the exchange as failed; its answer is shown all the same.\n\n"
     "Example:  qorctl kwp settings.ini 0x21 80",
     true, &declareKwp},

    {"connect-can", "Open the CAN bus (connectCanBus)",
     "Example:  qorctl connect-can settings.ini --bus-param 500000", false, &declareConnectCan},
    {"read-can", "Open the CAN bus and read values (getCanBusData)",
     "Example:  qorctl read-can settings.ini 0x201 0x280", false, &declareReadCan},
    {"send-can", "Open the CAN bus and send a message (sendCanBusMsg)",
     "Example:  qorctl send-can settings.ini 0x200 7 05 00 01", false, &declareSendCan},
};

}  // namespace

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all(std::begin(table), std::end(table));
    return all;
}

}  // namespace qorctl
