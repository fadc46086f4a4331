// A host's plug-in: the library comes and goes with it.

#include "LifeProbe.h"

#include "QorControlFacade.h"

int useFacade(const char* settingsPath, const char* hostPath) {
    QorControlFacade facade(settingsPath, nullptr, 0, hostPath);
    std::vector<double> values;
    int done = 0;
    if (facade.pingQor(10000)) ++done;
    if (facade.getParamData("MaxEngineSpeed", values, 3000) && values.size() == 1) ++done;
    if (facade.setParamData("MaxEngineSpeed", {6600}, {}, {}, 3000)) ++done;
    if (!facade.startDirectCtrl("NoSuchActuator", 3000)) ++done;
    return done;
}
