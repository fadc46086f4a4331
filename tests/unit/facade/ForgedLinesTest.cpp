#include "FacadeFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// Names come from whoever uses the host; the trace is read by whoever looks for a fault.
class ForgedLines : public FacadeTest {
protected:
    std::vector<double> values{1.0};
};

TEST_F(ForgedLines, ANameWithLineEndsStaysOnItsLine) {
    failAlways();
    start();
    const std::string name = "Speed\r\n1\tOK on set: Speed [0 ], t: 1 ms\n\x1b\x7f";
    const std::string shown = "Speed  1 OK on set: Speed [0 ], t: 1 ms   ";
    std::vector<std::vector<double>> groups;
    EXPECT_FALSE(facade->getParamData(name, values, values, values, 500));
    EXPECT_FALSE(facade->startDirectCtrl(name, 500));
    EXPECT_FALSE(facade->getParamDataAtOnce({name}, groups, 500));
    EXPECT_THAT(trace(),
                ElementsAre(HasSubstr("on param: " + shown + " , t"), HasSubstr("isEcuOnline"),
                            HasSubstr("on param: " + shown + " , t"),
                            HasSubstr("failed on " + shown + " , ")));
}

TEST_F(ForgedLines, SoDoWhatIsWrittenAndWhatIsOpened) {
    agent.script().onRequest = [](Channel&, const Cmd& command) {
        if (command.replyQueue != nullptr) ScriptedAgent::succeed(command);
    };
    start();
    EXPECT_TRUE(facade->setParamData("a\nb", values, {}, {}, 500));
    EXPECT_TRUE(facade->stopDirectCtrl("c\nd", 500));
    EXPECT_TRUE(facade->setEcuSegment("e\nf", true, nullptr));
    QorControlFacade::ModelDescription model;
    model.model = "g\n";
    model.hex = "\th";
    model.csv = "i\r";
    EXPECT_TRUE(facade->openModel(model));
    EXPECT_THAT(trace(),
                ElementsAre(HasSubstr("OK on set: a b [1 ]"), HasSubstr("Ctrl: c d , t"),
                            HasSubstr("'e f' [1]"), HasSubstr("'g ', hex = ' h', csv = 'i '")));
}

}  // namespace
