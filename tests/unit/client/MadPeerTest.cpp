// Small records that announce very much.

#include "ClientFixture.h"

#include <psapi.h>

namespace {

constexpr std::size_t mib = 1u << 20;
constexpr std::int32_t connectResult = -12;

/// The memory that this process has in use.
std::size_t usedBytes() {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.WorkingSetSize;
}

class MadPeer : public ClientTest {
protected:
    /// A record that announces two million values in its first array and ends there.
    static protocol::StaticParam announcing(std::uint32_t index) {
        protocol::StaticParam record;
        record.paramIndex = index;
        record.first = std::vector<double>(2000000);
        return record;
    }
};

TEST_F(MadPeer, ThatSendsEmptyArraysOfMillionsDoesNotFillTheProcess) {
    client();
    const std::size_t before = usedBytes();
    std::size_t most = 0;
    for (std::uint32_t index = 0; index < 60; ++index) {
        client().onStaticParam(announcing(index));
        most = std::max(most, usedBytes());
    }
    // The bound, the newest entry, and the record that is being handed over.
    EXPECT_LT(most - before, 64 * mib + 3 * 16 * mib);
}

TEST_F(MadPeer, ThatFillsEveryTableLeavesNoNameUnknownForEver) {
    clock.msPerRead = 1;
    for (int i = 0; i < 400000; ++i) {
        protocol::ParamInfo record;
        record.name = "Invented" + std::to_string(i);
        record.paramIndex = i;
        client().onParamInfo(record);
    }
    protocol::ParamInfo description;
    EXPECT_FALSE(client().getParamInfo("Invented0", description, 5, false));  // it made room
    qor.knows("S1", 5);
    EXPECT_TRUE(client().getParamInfo("S1", description, 100, false));
    qor.forgetSent();
    EXPECT_TRUE(client().getParamInfo("S1", description, 100, false));
    EXPECT_TRUE(qor.sent().empty());
}

TEST_F(MadPeer, ThatAnswersWhatNobodyAskedForFillsNothing) {
    client();
    const std::size_t before = usedBytes();
    {
        protocol::GetDtc codes;
        codes.dtcs.resize(200000);
        client().onDtcs(codes);
        protocol::CanBusData frames;
        frames.items.resize(2000000);
        client().onCanBusData(frames);
        protocol::ExecKwp kwp;
        kwp.data.assign(16 * mib, 'x');
        client().onKwpAnswer(kwp);
        protocol::GetHex model;
        model.text1.assign(16 * mib, 'x');
        client().onModelDescription(model);
        for (int i = 0; i < 3000000; ++i) client().onParamValue(connectResult, -2);
    }
    EXPECT_LT(usedBytes(), before + 8 * mib);
}

}  // namespace
