// Many threads that write at once.
#include <atomic>
#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <vector>

#include "common/ClockSeam.h"
#include "TraceFixture.h"
#include "unit/common/TestThread.h"

using testing_support::TestThread;

namespace {

// Reading the ticks, which happens in the middle of a line, gives way to other threads.
class YieldingClock : public common::IClock {
public:
    YieldingClock() { common::replaceClock(this); }
    ~YieldingClock() { common::replaceClock(nullptr); }
    YieldingClock(const YieldingClock&) = delete;
    YieldingClock& operator=(const YieldingClock&) = delete;

    std::uint32_t tickCount() override {
        Sleep(1);
        return 0xABCD;
    }
    void sleepMs(unsigned int) override {}
};

class TraceThreads : public testing_support::TraceFixture {
protected:
    void writeLines(int thread, int count) {
        for (int i = 0; i < count; ++i)
            write("", 4, 0, "thread %d line %d of some length to be torn apart\n", thread, i);
    }
};

}  // namespace

TEST_F(TraceThreads, LinesOfTenThreadsDoNotInterleave) {
    constexpr int threadCount = 10;
    constexpr int lineCount = 30;
    std::atomic<bool> begin{false};
    loadSettings("tid\ntc\n");
    YieldingClock clock;
    {
        std::vector<std::unique_ptr<TestThread>> threads;
        for (int t = 0; t < threadCount; ++t)
            threads.push_back(std::make_unique<TestThread>([&, t] {
                while (!begin) Sleep(0);
                writeLines(t, lineCount);
            }));
        begin = true;
    }
    std::istringstream lines(output());
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "ts tid tc ");
    const std::regex whole(
        "1\t[0-9A-F]+\t0000ABCD\tthread ([0-9]) line ([0-9]+) of some length to "
        "be torn apart");
    std::map<int, int> next;
    std::smatch match;
    while (std::getline(lines, line)) {
        ASSERT_TRUE(std::regex_match(line, match, whole)) << line;
        ASSERT_EQ(next[std::stoi(match[1])]++, std::stoi(match[2])) << line;
    }
    for (int t = 0; t < threadCount; ++t) EXPECT_EQ(next[t], lineCount);
}

TEST_F(TraceThreads, SettingsMayBeReadWhileOthersWrite) {
    {
        TestThread writer([this] { writeLines(0, 500); });
        TestThread reader([this] {
            for (int i = 0; i < 100; ++i)
                context.loadSettings(folder.writeText("trace.cfg", "tl=255\n"));
        });
    }
    const std::string all = output();
    std::size_t lines = 0;
    for (const char character : all) lines += character == '\n' ? 1u : 0u;
    EXPECT_EQ(lines, 501u) << "the settings line and 500 others";
}
