// Whatever a host passes as a name or a text: it reaches QOR and the logs as it is, is never taken
// for a format, and leaves the station working.

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

#include "Models.h"
#include "Station.h"
#include "Waiting.h"

using testing::Contains;

namespace {

constexpr unsigned amply = 5000;

struct BadText {
    const char* name;
    std::string text;
};

const BadText badTexts[] = {{"nothing", ""},
                            {"percentSigns", "%s%n%d %p%5000x 100%"},
                            {"lineEnds", "two\r\nlines\n"},
                            {"manyCharacters", std::string(10000, 'n')},
                            {"foreignBytes", "\xC3\xA4\xF6\xFF\x80\x01"},
                            {"aZero", std::string("a\0b", 3)}};

/// One operation and the place in it where the text goes.
struct Place {
    const char* name;
    std::function<bool(QorControlFacade&, const std::string&)> call;
    bool succeeds;
    unsigned id;      ///< of the record that carries the text to QOR
    const char* log;  ///< the host's line, with the text for its "*"; null: none
};

const Place places[] = {
    {"getParamDescription",
     [](QorControlFacade& facade, const std::string& text) {
         wex::ParamDescription description = {};
         const bool done = facade.getParamDescription(text, description);
         EXPECT_EQ(text, description.name);
         return done;
     },
     false, 3, nullptr},
    {"getParamData",
     [](QorControlFacade& facade, const std::string& text) {
         std::vector<double> values, second, third;
         return facade.getParamData(text, values, second, third, amply);
     },
     false, 3, "error: FAILED GET-param(*), t: # ms"},
    {"getParamDataAsString",
     [](QorControlFacade& facade, const std::string& text) {
         std::string value;
         return facade.getParamDataAsString(text, value, amply);
     },
     false, 3, "error: FAILED GET-param(*), t: # ms"},
    {"setParamData",
     [](QorControlFacade& facade, const std::string& text) {
         return facade.setParamData(text, {1}, {}, {}, amply);
     },
     false, 3, "error: FAILED SET-param(*), t: # ms"},
    {"setDynamicData_name",
     [](QorControlFacade& facade, const std::string& text) {
         return facade.setDynamicData(text, "1", amply);
     },
     false, 3, "error: FAILED SET-DYN-param(*), t: # ms"},
    {"setDynamicData_value",
     [](QorControlFacade& facade, const std::string& text) {
         return facade.setDynamicData("MaxEngineSpeed", text, amply);
     },
     false, 7, "error: FAILED SET-DYN-param(MaxEngineSpeed), t: # ms"},
    {"startDirectCtrl",
     [](QorControlFacade& facade, const std::string& text) {
         return facade.startDirectCtrl(text, amply);
     },
     false, 3, "error: FAILED START_DIRECTCTRL-param(*), t: # ms"},
    {"stopDirectCtrl",
     [](QorControlFacade& facade, const std::string& text) {
         return facade.stopDirectCtrl(text, amply);
     },
     false, 3, "error: FAILED STOP_DIRECTCTRL-param(*), t: # ms"},
    {"getParamDataAtOnce",
     [](QorControlFacade& facade, const std::string& text) {
         std::vector<std::vector<double>> group;
         return facade.getParamDataAtOnce({"MaxEngineSpeed", text}, group, amply);
     },
     false, 3, "error: FAILED GET_AT_ONCE-p(MaxEngineSpeed , * , ), t: # ms"},
    {"setEcuSegment",
     [](QorControlFacade& facade, const std::string& text) {
         return facade.setEcuSegment(text, false, nullptr);
     },
     false, 14, "info: SET-segment(*): [0]"},
    {"openModel_model",
     [](QorControlFacade& facade, const std::string& text) {
         return facade.openModel({1, text, 0, "", 0, "", 0, {}});
     },
     true, 1, "info: OPEN-model(*): ['' '']"},
    {"openModel_hex",
     [](QorControlFacade& facade, const std::string& text) {
         return facade.openModel({1, "m", 0, text, 0, "", 0, {}});
     },
     true, 1, "info: OPEN-model(m): ['*' '']"},
    {"openModel_csv",
     [](QorControlFacade& facade, const std::string& text) {
         return facade.openModel({1, "m", 0, "", 0, text, 0, {}});
     },
     true, 1, "info: OPEN-model(m): ['' '*']"},
    {"openModel_extra",
     [](QorControlFacade& facade, const std::string& text) {
         return facade.openModel({1, "m", 0, "", 0, "", 0, {{text, text}}});
     },
     true, 1, "info: OPEN-model(m): ['' '']"},
    // The bus is not open: QOR refuses.
    {"sendCanBusMsg",
     [](QorControlFacade& facade, const std::string& text) {
         return facade.sendCanBusMsg(1, 2, text, amply);
     },
     false, 19, "error: FAILED CanBus-send, t: # ms"}};

using Case = std::tuple<Transport, BadText>;

std::string caseName(const testing::TestParamInfo<Case>& info) {
    return nameOf(std::get<0>(info.param)) + "_" + std::get<1>(info.param).name;
}

class BadTexts : public testing::TestWithParam<Case> {
protected:
    BadTexts() {
        station.settings.model = station.folder.write("model.json", modelExporting(-1, -1));
    }

    /// Whether a request with this id since the `from`th record carried the text.
    bool hasCarried(unsigned id, std::size_t from) const {
        const auto all = requestsIn(station.wire());
        for (std::size_t i = from; i < all.size(); ++i)
            if (all[i].id == id && all[i].payload.find(text) != std::string::npos) return true;
        return false;
    }
    /// The host's log takes texts as C does: a zero ends the one that it stands in.
    std::string logLineOf(const Place& place) const {
        std::string line = place.log;
        const auto at = line.find('*');
        if (at == std::string::npos) return line;
        const bool hasZero = text.find('\0') != std::string::npos;
        const std::size_t end = hasZero ? line.find_first_of("')", at) : at + 1;
        return line.replace(at, end - at, text.c_str());
    }

    /// Whether the trace has the text behind these words, as far as its lines go: on one line,
    /// whatever line ends it has.
    bool isTraced(const std::string& words) const {
        std::string shown = text.c_str();
        std::replace_if(
            shown.begin(), shown.end(), [](char c) { return c > 0 && c < ' '; }, ' ');
        const std::string line = (words + shown).substr(0, 2 + 2047);
        return bytesOfFile(station.tracePath()).find(line) != std::string::npos;
    }

    const std::string text = std::get<1>(GetParam()).text;
    Station station{std::get<0>(GetParam())};
};

INSTANTIATE_TEST_SUITE_P(Over, BadTexts,
                         testing::Combine(everyTransport(), testing::ValuesIn(badTexts)), caseName);

TEST_P(BadTexts, ReachQorAndTheHostsLogAsTheyAreAndLeaveTheStationWorking) {
    ASSERT_TRUE(station.start());
    for (const Place& place : places) {
        SCOPED_TRACE(place.name);
        // A name that QOR does not know is asked for once only.
        const std::size_t requests = place.id == 3 ? 0 : requestsIn(station.wire()).size();
        const std::size_t logged = station.logLines().size();
        EXPECT_EQ(place.succeeds, place.call(station.facade(), text));
        ASSERT_TRUE(station->pingQor(amply));
        EXPECT_TRUE(hasCarried(place.id, requests));
        if (place.log != nullptr) {
            EXPECT_THAT(station.logLines(logged), testing::ElementsAre(logLineOf(place)));
        }
    }
    EXPECT_TRUE(isTraced("2\tQorControlFacade::getParamData() failed on param: "));
    std::vector<double> values;
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
}

TEST_P(BadTexts, AsTheSecurityLibraryOrInAStreamLeaveTheStationWorking) {
    ASSERT_TRUE(station.start());
    auto settings = usualConnect();
    settings.securityDll = text;
    // QOR refuses a library without a name; one with a name that is too long has none.
    station->connect(settings, QorControlFacade::EcuConnect::SecurityAccess, &station.monitor);
    EXPECT_THAT(station.logLines(),
                Contains(testing::EndsWith(" " + std::string(text.c_str()) + "]")));
    ASSERT_TRUE(station.connectEcu());
    ThreadSafeQueue<std::vector<QorControlFacade::ParamValue>> queue(1);
    EXPECT_TRUE(station->startParamRead(&queue, {text}));
    ASSERT_TRUE(eventually(amply, [&] { return hasCarried(3, 0); }));
    EXPECT_TRUE(station->stopParamRead(&queue));
    ASSERT_TRUE(station->pingQor(amply));
}

}  // namespace
