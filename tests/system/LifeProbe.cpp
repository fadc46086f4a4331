// A host's plug-in: the library comes and goes with it.

#include "LifeProbe.h"

#include <windows.h>

#include <memory>

#include "QorControlFacade.h"

namespace {

const QorControlFacade::EcuConnect ecu = {1,   1,   true, 10400, 125000, 200, ~0u,
                                          ~0u, 255, 255,  255,   true,   "",  true};

/// Makes QOR ask its question, and waits until it stands on the screen.
void awaitQuestion(QorControlFacade& facade, const char* title) {
    facade.pingQor(10000);
    facade.connect(ecu, ecu.Default, nullptr);
    for (int i = 0; i < 1000 && FindWindowA(nullptr, title) == nullptr; ++i) Sleep(10);
}

}  // namespace

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

unsigned long destroyFacade(const char* settingsPath, const char* hostPath, const char* title) {
    auto facade = std::make_unique<QorControlFacade>(settingsPath, nullptr, 0, hostPath);
    if (*title != '\0')
        awaitQuestion(*facade, title);
    else
        Sleep(300);  // the agent is in the middle of the launch
    const ULONGLONG start = GetTickCount64();
    facade.reset();
    return static_cast<unsigned long>(GetTickCount64() - start);
}
