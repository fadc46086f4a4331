// QOR asks the operator something through the host's process.

#include <gmock/gmock.h>

#include <algorithm>

#include "Station.h"
#include "Waiting.h"
#include "WireText.h"

using testing::Contains;

namespace {

constexpr unsigned amply = 10000;
constexpr int textControl = 65535;

class Question : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    std::string caption = station.settings.titles + "-question";

    /// QOR asks shortly after it has been connected with an ECU.
    bool startAsking(unsigned type) {
        station.script = R"({"at":[{"since":"connect","afterMs":300,"messageBox":{"caption":")" +
                         caption + R"(","text":"Go on with 100%s?","type":)" +
                         std::to_string(type) + "}}]}";
        return station.start() &&
               station->connect(usualConnect(), QorControlFacade::EcuConnect::Default, nullptr);
    }
    HWND awaitBox() const {
        HWND box = nullptr;
        eventually(amply, [&] {
            box = FindWindowA("#32770", caption.c_str());
            return box != nullptr;
        });
        return box;
    }
    /// Whether QOR's question has been acknowledged, and how.
    std::string acknowledgement() const {
        const auto records = station.wire();
        for (const WireRecord& question : records)
            for (const WireRecord& record : records)
                if (!question.toQor && question.id == 10 && record.toQor &&
                    record.requestId == question.requestId)
                    return describe(record) + (record.isReply ? " reply" : "");
        return std::string();
    }
    bool awaitRequest(const std::string& request) const {
        return eventually(amply, [&] {
            const auto requests = station.requests();
            return std::find(requests.begin(), requests.end(), request) != requests.end();
        });
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Question, everyTransport(), transportName);

TEST_P(Question, TheChoiceGoesBackToQorAsARequestOfItsOwn) {
    ASSERT_TRUE(startAsking(MB_YESNO));
    HWND const box = awaitBox();
    ASSERT_NE(nullptr, box);
    char text[100] = "";
    GetDlgItemTextA(box, textControl, text, sizeof text);
    EXPECT_STREQ("Go on with 100%s?", text);
    EXPECT_NE(nullptr, GetDlgItem(box, IDYES));
    EXPECT_NE(nullptr, GetDlgItem(box, IDNO));
    ASSERT_TRUE(PostMessageA(box, WM_COMMAND, IDNO, 0));
    EXPECT_TRUE(awaitRequest("RedirectUI '' '' 0 7"));
    EXPECT_TRUE(station->pingQor(amply));
}

TEST_P(Question, AnotherButtonIsAnotherChoice) {
    ASSERT_TRUE(startAsking(MB_OKCANCEL));
    HWND const box = awaitBox();
    ASSERT_NE(nullptr, box);
    ASSERT_TRUE(PostMessageA(box, WM_COMMAND, IDOK, 0));
    EXPECT_TRUE(awaitRequest("RedirectUI '' '' 0 1"));
}

/// Over a stream the acknowledgement is a record that can be seen.
class QuestionOverTcp : public Question {};

INSTANTIATE_TEST_SUITE_P(Over, QuestionOverTcp, testing::Values(Transport::tcp), transportName);

TEST_P(QuestionOverTcp, QorIsReleasedWhileTheBoxIsStillOpen) {
    ASSERT_TRUE(startAsking(MB_YESNO));
    HWND const box = awaitBox();
    ASSERT_NE(nullptr, box);
    EXPECT_TRUE(eventually(2000, [&] { return acknowledgement() == "Ping 0 reply"; }));
    EXPECT_TRUE(IsWindow(box));
    ASSERT_TRUE(PostMessageA(box, WM_COMMAND, IDYES, 0));
    EXPECT_TRUE(awaitRequest("RedirectUI '' '' 0 6"));
}

}  // namespace
