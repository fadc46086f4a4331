// QOR's message boxes through the C interface: answered or put before the host, and always told.

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <vector>

#include "CStation.h"

namespace {

constexpr unsigned amplyMs = 10000;

class CMessageBox : public testing::TestWithParam<Transport> {
protected:
    CStation station{GetParam()};

    void TearDown() override {
        EXPECT_THAT(QorSetMessageBoxPolicy(nullptr, QOR_BOX_SHOW, 0, 0), IsCause(QOR_OK));
    }

    QorHandle qor() const { return station.handle; }

    /// QOR asks shortly after it has connected an ECU.
    bool startAsking() {
        station.script =
            R"({"at":[{"since":"connect","afterMs":100,"messageBox":{"caption":"Calibration",)"
            R"("text":"Go on?","type":4}}]})";
        return station.start() && QorConnectStart(qor(), nullptr, QOR_CONNECT_DEFAULT) == QOR_OK;
    }
    bool answeredWith(unsigned choice) const {
        return eventually(amplyMs, [&] {
            const auto requests = station.requests();
            return std::any_of(requests.begin(), requests.end(), [&](const std::string& request) {
                return request.find("RedirectUI") == 0 &&
                       request.find(std::to_string(choice)) != std::string::npos;
            });
        });
    }
    QorMessageBox next(char* text, unsigned capacity) {
        QorMessageBox box = {};
        box.size = sizeof box;
        char caption[32] = "";
        EXPECT_TRUE(eventually(amplyMs, [&] {
            return QorNextMessageBox(qor(), &box, text, capacity, nullptr, caption, sizeof caption,
                                     nullptr) != QOR_NOT_READY;
        }));
        EXPECT_STREQ("Calibration", caption);
        return box;
    }
};

INSTANTIATE_TEST_SUITE_P(Over, CMessageBox, everyTransport(), transportName);

TEST_P(CMessageBox, IsAnsweredAsTheHostHasSaidOnceForAllHandles) {
    ASSERT_THAT(QorSetMessageBoxPolicy(nullptr, QOR_BOX_ANSWER, QOR_CHOICE_NO, 0), IsCause(QOR_OK));
    ASSERT_TRUE(startAsking());
    EXPECT_TRUE(answeredWith(QOR_CHOICE_NO));
    char text[32] = "";
    const QorMessageBox box = next(text, sizeof text);
    EXPECT_STREQ("Go on?", text);
    EXPECT_EQ(1u, box.id);
    EXPECT_EQ(4u, box.type);
    EXPECT_EQ(0, box.waiting);
    EXPECT_EQ(7u, box.choice);
    QorMessageBox other = {};
    other.size = sizeof other;
    EXPECT_THAT(QorNextMessageBox(qor(), &other, nullptr, 0, nullptr, nullptr, 0, nullptr),
                IsCause(QOR_NOT_READY));
}

TEST_P(CMessageBox, IsAnsweredByTheHost) {
    ASSERT_THAT(QorSetMessageBoxPolicy(nullptr, QOR_BOX_ASK, QOR_CHOICE_NO, 60000),
                IsCause(QOR_OK));
    ASSERT_TRUE(startAsking());
    char text[32] = "";
    const QorMessageBox box = next(text, sizeof text);
    EXPECT_EQ(1, box.waiting);
    EXPECT_EQ(0u, box.choice);
    EXPECT_THAT(QorAnswerMessageBox(qor(), box.id + 1, QOR_CHOICE_YES), IsCause(QOR_WRONG_ORDER));
    EXPECT_THAT(QorAnswerMessageBox(qor(), box.id, QOR_CHOICE_YES), IsCause(QOR_OK));
    EXPECT_TRUE(answeredWith(QOR_CHOICE_YES));
    EXPECT_THAT(QorAnswerMessageBox(qor(), box.id, QOR_CHOICE_NO), IsCause(QOR_WRONG_ORDER));
}

TEST_P(CMessageBox, IsAnsweredByTheGivenChoiceWhenTheHostDoesNot) {
    ASSERT_THAT(QorSetMessageBoxPolicy(nullptr, QOR_BOX_ASK, QOR_CHOICE_NO, 200), IsCause(QOR_OK));
    ASSERT_TRUE(startAsking());
    EXPECT_TRUE(answeredWith(QOR_CHOICE_NO));
}

TEST_P(CMessageBox, IsToldAgainUntilItsTextsHaveBeenCopied) {
    ASSERT_THAT(QorSetMessageBoxPolicy(nullptr, QOR_BOX_ANSWER, QOR_CHOICE_YES, 0),
                IsCause(QOR_OK));
    ASSERT_TRUE(startAsking());
    ASSERT_TRUE(answeredWith(QOR_CHOICE_YES));
    QorMessageBox box = {};
    box.size = sizeof box;
    unsigned textBytes = 0;
    unsigned captionBytes = 0;
    EXPECT_THAT(QorNextMessageBox(qor(), &box, nullptr, 0, &textBytes, nullptr, 0, &captionBytes),
                IsCause(QOR_OK));
    EXPECT_EQ(7u, textBytes);
    EXPECT_EQ(12u, captionBytes);
    char text[7] = "";
    char caption[12] = "";
    box.id = 0;
    EXPECT_THAT(QorNextMessageBox(qor(), &box, text, 7, nullptr, caption, 11, &captionBytes),
                IsCause(QOR_RESULT_TOO_LARGE));
    EXPECT_EQ(0u, box.id);
    EXPECT_STREQ("", text);
    EXPECT_THAT(QorNextMessageBox(qor(), &box, text, 7, nullptr, caption, 12, nullptr),
                IsCause(QOR_OK));
    EXPECT_STREQ("Go on?", text);
    EXPECT_THAT(QorNextMessageBox(qor(), &box, text, 7, nullptr, caption, 12, nullptr),
                IsCause(QOR_NOT_READY));
}

TEST_P(CMessageBox, IsHandedToOneOnlyOfManyWhoAskAtOnce) {
    constexpr int boxes = 40;
    std::string all;
    for (int i = 0; i < boxes; ++i)
        all += std::string(i == 0 ? "" : ",") +
               R"({"since":"client","afterMs":100,"messageBox":{"caption":"C","text":"T"}})";
    ASSERT_THAT(QorSetMessageBoxPolicy(nullptr, QOR_BOX_ANSWER, QOR_CHOICE_OK, 0), IsCause(QOR_OK));
    station.script = R"({"at":[)" + all + "]}";
    ASSERT_TRUE(station.start());
    std::atomic<int> told{0};
    std::vector<std::future<std::vector<unsigned>>> askers;
    for (int i = 0; i < 4; ++i)
        askers.push_back(std::async(std::launch::async, [&] {
            std::vector<unsigned> ids;
            QorMessageBox box = {};
            box.size = sizeof box;
            char text[2] = "";
            const ULONGLONG end = GetTickCount64() + amplyMs;
            while (told < boxes && GetTickCount64() < end) {
                if (QorNextMessageBox(qor(), &box, text, 2, nullptr, nullptr, 0, nullptr) != QOR_OK)
                    continue;
                ids.push_back(box.id);
                ++told;
            }
            return ids;
        }));
    std::vector<unsigned> ids;
    for (auto& asker : askers)
        for (const unsigned id : asker.get()) ids.push_back(id);
    std::sort(ids.begin(), ids.end());
    ASSERT_EQ(boxes, static_cast<int>(ids.size()));
    for (int i = 0; i < boxes; ++i) EXPECT_EQ(static_cast<unsigned>(i) + 1, ids[i]);
}

TEST_P(CMessageBox, APolicyThatIsNoneIsRefused) {
    EXPECT_THAT(QorSetMessageBoxPolicy(nullptr, 3, QOR_CHOICE_OK, 0), IsCause(QOR_BAD_ARGUMENT));
    EXPECT_THAT(QorSetMessageBoxPolicy(nullptr, QOR_BOX_ANSWER, 0, 0), IsCause(QOR_BAD_ARGUMENT));
    EXPECT_THAT(QorSetMessageBoxPolicy(nullptr, QOR_BOX_ASK, 12, 0), IsCause(QOR_BAD_ARGUMENT));
}

}  // namespace
