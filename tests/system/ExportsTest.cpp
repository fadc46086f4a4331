// What the library's DLL hands out: the facade, and what the templates of its headers call.

#include <gmock/gmock.h>
#include <windows.h>

#include <string>
#include <vector>

#include "ModuleExports.h"
#include "QorControlFacade.h"

using testing::AnyOf;
using testing::Each;
using testing::Eq;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

namespace {

std::vector<std::string> exportedNames() {
    return namesExportedBy("QorControlFacade.dll");
}

TEST(Exports, AreTheFacadeAndWhatItsQueuesNeed) {
    // The library must be loaded.
    EXPECT_EQ(QorControlFacade::getEdcRamSegmentName(), "WorkingPage");
    const std::vector<std::string> names = exportedNames();
    EXPECT_THAT(names, testing::Contains(Eq("_ZN6common7sleepMsEj")));
    EXPECT_THAT(names, Each(AnyOf(HasSubstr("16QorControlFacade"), StartsWith("_ZN10qorcontrol"),
                                  StartsWith("_ZN6common4Lock"), StartsWith("_ZN6common5Event"),
                                  StartsWith("_ZNK6common5Event"), Eq("_ZN6common7sleepMsEj"))));
}

// What the import tables of hosts in the field name, with $ for a text: without one of them they do
// not start.
const char* const namesOfInstalledHosts[] = {
    "_ZN16QorControlFacade20getEdcRamSegmentNameB5cxx11Ev",
    "_ZN16QorControlFacade20getEdcRomSegmentNameB5cxx11Ev",
    "_ZN16QorControlFacade20getQorExecutablePathB5cxx11Ev",
    "_ZN16QorControlFacade8shutdownEv",
    "_ZN16QorControlFacadeC1ERK$PK6EolLogjS7_",
    "_ZN16QorControlFacadeC2ERK$PK6EolLogjS7_",
    "_ZN16QorControlFacadeD1Ev",
    "_ZN16QorControlFacadeD2Ev",
    "_ZN6common4Lock5enterEv",
    "_ZN6common4Lock5leaveEv",
    "_ZN6common4Lock7releaseEv",
    "_ZN6common4LockC1Ev",
    "_ZN6common4LockC2Ev",
    "_ZN6common4LockD1Ev",
    "_ZN6common4LockD2Ev",
    "_ZN6common5Event4waitEj",
    "_ZN6common5Event5resetEv",
    "_ZN6common5Event6signalEv",
    "_ZN6common5EventC1Ev",
    "_ZN6common5EventC2Ev",
    "_ZN6common5EventD1Ev",
    "_ZN6common5EventD2Ev",
    "_ZN6common7sleepMsEj",
    "_ZNK16QorControlFacade11isEcuOnlineEv",
    "_ZNK16QorControlFacade11stopDtcReadEv",
    "_ZNK16QorControlFacade12getParamDataERK$RSt6vectorIdSaIdEESB_SB_j",
    "_ZNK16QorControlFacade12getParamDataERK$RSt6vectorIdSaIdEEj",
    "_ZNK16QorControlFacade12isConnectingEv",
    "_ZNK16QorControlFacade12setParamDataERK$RKSt6vectorIdSaIdEESC_SC_j",
    "_ZNK16QorControlFacade12startDtcReadEP15ThreadSafeQueueISt6vectorINS_14DtcDescriptionESaIS2_"
    "EEEjj",
    "_ZNK16QorControlFacade13connectCanBusERKNS_13CanBusConnectENS_10EcuConnect8ConnTypeE",
    "_ZNK16QorControlFacade13getCanBusDataERNS_10CanBusDataEj",
    "_ZNK16QorControlFacade13sendCanBusMsgEjjRK$j",
    "_ZNK16QorControlFacade13setEcuSegmentERK$bP16IProgressMonitor",
    "_ZNK16QorControlFacade13stopParamReadEP15ThreadSafeQueueISt6vectorINS_10ParamValueESaIS2_EEE",
    "_ZNK16QorControlFacade14getDtcByStatusERSt6vectorINS_14DtcDescriptionESaIS1_EEj",
    "_ZNK16QorControlFacade14sendKwpCommandERNS_10KwpCommandEj",
    "_ZNK16QorControlFacade14setDynamicDataERK$S7_j",
    "_ZNK16QorControlFacade14startParamReadEP15ThreadSafeQueueISt6vectorINS_10ParamValueESaIS2_"
    "EEERKS1_I$SaISC_EE",
    "_ZNK16QorControlFacade14stopDirectCtrlERK$j",
    "_ZNK16QorControlFacade15startDirectCtrlERK$j",
    "_ZNK16QorControlFacade18getParamDataAtOnceERKSt6vectorI$SaIS6_EERS0_IS0_IdSaIdEESaISC_EEj",
    "_ZNK16QorControlFacade19getParamDescriptionERK$RN3wex16ParamDescriptionE",
    "_ZNK16QorControlFacade20getParamDataAsStringERK$RS5_j",
    "_ZNK16QorControlFacade7connectERKNS_10EcuConnectENS0_8ConnTypeEP16IProgressMonitor",
    "_ZNK16QorControlFacade7pingQorEj",
    "_ZNK16QorControlFacade8clearDtcEj",
    "_ZNK16QorControlFacade9openModelERKNS_16ModelDescriptionE",
};

std::vector<std::string> namesThatMustStay() {
    const std::string text = "NSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";
    std::vector<std::string> names;
    for (std::string name : namesOfInstalledHosts) {
        for (std::size_t at; (at = name.find('$')) != std::string::npos;) name.replace(at, 1, text);
        names.push_back(name);
    }
    return names;
}

TEST(Exports, AreStillThoseThatInstalledHostsAskFor) {
    EXPECT_EQ(QorControlFacade::getEdcRomSegmentName(), "ReferencePage");
    EXPECT_THAT(exportedNames(), IsSupersetOf(namesThatMustStay()));
}

TEST(Exports, NothingReplacesTheClock) {
    EXPECT_THAT(exportedNames(), Each(Not(HasSubstr("Clock"))));
    EXPECT_THAT(exportedNames(), Each(Not(HasSubstr("tickCount"))));
}

}  // namespace
