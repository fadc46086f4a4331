#include <set>

#include "TestSupport.h"

namespace simulator::test {
namespace {

TEST(ShippedModel, HoldsFortyFiveParametersOfEveryKind) {
    const EcuModel model = loadModel(SHIPPED_MODEL);
    EXPECT_GE(model.parameters.size(), 45U);
    std::set<ParameterKind> kinds;
    for (const ParameterModel& parameter : model.parameters) kinds.insert(parameter.kind);
    EXPECT_EQ(kinds.size(), 7U);
    EXPECT_FALSE(model.troubleCodes.empty());
    EXPECT_FALSE(model.kwpServices.empty());
    EXPECT_FALSE(model.canFrames.empty());
}

TEST(ShippedModel, EveryParameterIsDescribed) {
    for (const ParameterModel& parameter : loadModel(SHIPPED_MODEL).parameters) {
        EXPECT_NE(parameter.description, "") << parameter.name;
        EXPECT_NE(parameter.group, "") << parameter.name;
    }
}

TEST(ShippedModel, TheEngineRunsFasterWhileTheThrottleIsDriven) {
    const EcuModel model = loadModel(SHIPPED_MODEL);
    ParameterStore parameters(model.parameters);
    const auto index = [&](const char* name) {
        return static_cast<std::uint32_t>(parameters.indexOf(*parameters.find(name)));
    };
    parameters.advanceTo(1000);
    EXPECT_NEAR(parameters.firstValue(index("EngineSpeed")), 850.0, 60.0);
    EXPECT_EQ(parameters.startControl(index("ThrottleActuator")), std::nullopt);
    EXPECT_EQ(parameters.writeValues(index("ThrottleActuator"), {50.0}), std::nullopt);
    parameters.advanceTo(9000);
    EXPECT_NEAR(parameters.firstValue(index("EngineSpeed")), 2950.0, 60.0);
}

}  // namespace
}  // namespace simulator::test
