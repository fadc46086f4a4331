#include "app/Settings.h"

#include <map>

#include "TestSupport.h"

namespace simulator::test {
namespace {

using Values = std::map<std::string, std::string>;

Settings settingsOf(Values values) {
    values.emplace("UseTcp", "true");
    values.emplace("TcpPort", "47110");
    values.emplace("ServerPipeName", "Server");
    values.emplace("ClientPipeName", "Client");
    const auto read = [&](const std::string& section, const std::string& key) {
        const bool isCommon = key == "UseTcp" || key == "TcpPort" || key == "ServerIp" ||
                              key == "ServerPipeName" || key == "ClientPipeName";
        EXPECT_EQ(section, isCommon ? "CommonSettings" : "Simulator") << key;
        return values[key];
    };
    return settingsFrom(read, {"c:\\set\\", "c:\\prog\\", "c:\\temp\\export-1-"});
}

std::string errorOf(const Values& values) {
    return configErrorOf([&] { settingsOf(values); });
}

TEST(Settings, MissingKeysTakeTheirDefaults) {
    const Settings settings = settingsOf({});
    EXPECT_EQ(settings.serverIp, "127.0.0.1");
    EXPECT_EQ(settings.tcpPort, 47110);
    EXPECT_EQ(settings.modelPath, "c:\\prog\\engine.json");
    EXPECT_EQ(settings.scriptPath, "");
    EXPECT_EQ(settings.recordLogPath, "");
    EXPECT_EQ(settings.exportPrefix, "c:\\temp\\export-1-");
    EXPECT_EQ(settings.answerStyle, AnswerStyle::Stamped);
    EXPECT_EQ(settings.windowAnswer, WindowAnswer::Released);
    EXPECT_EQ(settings.windowSendMs, 500U);
    EXPECT_EQ(settings.connectMs, 600U);
    EXPECT_EQ(settings.exitWithoutClientMs, 60000U);
}

TEST(Settings, RelativePathsGoByTheFolderOfTheSettings) {
    const Settings settings =
        settingsOf({{"Model", "m\\a.json"}, {"Script", "d:\\s.json"}, {"RecordLog", "\\\\h\\r"}});
    EXPECT_EQ(settings.modelPath, "c:\\set\\m\\a.json");
    EXPECT_EQ(settings.scriptPath, "d:\\s.json");
    EXPECT_EQ(settings.recordLogPath, "\\\\h\\r");
}

TEST(Settings, TcpIsChosenByTheWordTrueInAnyCase) {
    EXPECT_EQ(settingsOf({{"UseTcp", "TRUE"}}).transport, Transport::Tcp);
    for (const char* other : {"", "1", "yes", "false"}) {
        EXPECT_EQ(settingsOf({{"UseTcp", other}}).transport, Transport::WindowMessages) << other;
    }
}

TEST(Settings, WindowMessagesNeedTwoTitlesAndNoPort) {
    const Settings settings = settingsOf({{"UseTcp", ""}, {"TcpPort", "0"}});
    EXPECT_EQ(settings.serverTitle, "Server");
    EXPECT_EQ(settings.clientTitle, "Client");
    EXPECT_THAT(errorOf({{"UseTcp", ""}, {"ServerPipeName", ""}}),
                testing::HasSubstr("[CommonSettings] ServerPipeName: is missing"));
    EXPECT_THAT(errorOf({{"UseTcp", ""}, {"ClientPipeName", ""}}),
                testing::HasSubstr("[CommonSettings] ClientPipeName: is missing"));
    EXPECT_EQ(errorOf({{"UseTcp", ""}, {"ClientPipeName", "SERVER"}}),
              "[CommonSettings] ClientPipeName: must differ from ServerPipeName");
}

TEST(Settings, TcpNeedsNoTitles) {
    EXPECT_EQ(errorOf({{"ServerPipeName", ""}, {"ClientPipeName", ""}}), "");
}

TEST(Settings, TheWayOfAnsweringWindowMessagesIsChosen) {
    const auto chosen = [](const char* way) {
        return settingsOf({{"UseTcp", ""}, {"WindowAnswer", way}}).windowAnswer;
    };
    EXPECT_EQ(chosen("inside"), WindowAnswer::Inside);
    EXPECT_EQ(chosen("Released"), WindowAnswer::Released);
    EXPECT_EQ(chosen("later"), WindowAnswer::Later);
}

TEST(Settings, EveryBadValueIsNamedWithItsKey) {
    EXPECT_EQ(errorOf({{"TcpPort", "0"}}), "[CommonSettings] TcpPort: must not be 0");
    EXPECT_EQ(errorOf({{"TcpPort", "65536"}}),
              "[CommonSettings] TcpPort: \"65536\" is not a whole number from 0 to 65535");
    EXPECT_EQ(errorOf({{"AnswerStyle", "both"}}),
              "[Simulator] AnswerStyle: \"both\" is neither \"stamped\" nor \"separate\"");
    EXPECT_EQ(errorOf({{"WindowAnswer", "soon"}}),
              "[Simulator] WindowAnswer: \"soon\" is none of inside, released, later");
    EXPECT_EQ(errorOf({{"WindowSendMs", "0"}}), "[Simulator] WindowSendMs: must not be 0");
    EXPECT_EQ(errorOf({{"ConnectMs", "1e3"}}),
              "[Simulator] ConnectMs: \"1e3\" is not a whole number from 0 to 86400000");
    EXPECT_THAT(errorOf({{"ExitWithoutClientMs", "99999999999"}}),
                testing::HasSubstr("ExitWithoutClientMs"));
    for (const char* ip : {"host", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.", "1..2.3"}) {
        EXPECT_THAT(errorOf({{"ServerIp", ip}}), testing::HasSubstr("ServerIp")) << ip;
    }
}

TEST(Settings, AKeyThatNothingReadsIsAnErrorWithTheNearestOne) {
    const auto errorOfKey = [](const std::string& key) {
        return configErrorOf([&] { refuseUnknownKeys({"Model", key}); });
    };
    const std::string known =
        "nown: Model, Script, AnswerStyle, WindowAnswer, WindowSendMs, ConnectMs, "
        "ExitWithoutClientMs, RecordLog, Log, ExportPrefix";
    EXPECT_EQ(errorOfKey("ConectMs"),
              "[Simulator] ConectMs: unknown key - did you mean \"ConnectMs\"? K" + known);
    EXPECT_EQ(errorOfKey("TcpPort"), "[Simulator] TcpPort: unknown key - k" + known);
    EXPECT_EQ(errorOfKey("connectms"), "");
}

TEST(Settings, EveryKeyThatIsReadIsKnown) {
    Names keys;
    const SettingsReader read = [&](const std::string& section, const std::string& key) {
        if (section == "Simulator") keys.push_back(key);
        return std::string(key == "UseTcp" ? "true" : key == "TcpPort" ? "1" : "");
    };
    settingsFrom(read, {});
    logPathFrom(read, {});
    EXPECT_GE(keys.size(), 10U);
    EXPECT_EQ(configErrorOf([&] { refuseUnknownKeys(keys); }), "");
}

TEST(Settings, TheStyleOfAnsweringIsChosen) {
    EXPECT_EQ(settingsOf({{"AnswerStyle", "separate"}}).answerStyle, AnswerStyle::Separate);
}

}  // namespace
}  // namespace simulator::test
