// Connects an ECU, reads a parameter and writes another; the argument is QOR's settings file.
#include <windows.h>

#include <cstdio>

#include "QorControlFacade.h"

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    QorControlFacade qor(argv[1], nullptr, 200, argv[0]);  // starts QOR in the background
    const QorControlFacade::EcuConnect ecu = {1,   1,   true, 10400, 125000, 200, ~0u,
                                              ~0u, 255, 255,  255,   true,   "",  true};
    if (!qor.pingQor(6000) || !qor.connect(ecu, ecu.Default, nullptr)) return 1;
    for (int i = 0; i < 100 && !qor.isEcuOnline(); ++i) Sleep(100);

    std::vector<double> speed;
    if (!qor.getParamData("EngineSpeed", speed, 1000) || speed.empty()) return 1;
    std::printf("engine speed %.0f 1/min\n", speed[0]);
    return qor.setParamData("IdleSpeedTarget", {900}, {}, {}, 1000) ? 0 : 1;
}
