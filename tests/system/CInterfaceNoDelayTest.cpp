// The option "no delay" of the C interface.

#include <gmock/gmock.h>

#include "CStation.h"
#include "UsualTime.h"

namespace {

TEST(CInterfaceNoDelay, RequestsDoNotWaitForConfirmationsWhereItIsWanted) {
    constexpr unsigned amply = 3000;
    CStation station{Transport::tcp};
    station.settings.answerStyle = "separate";
    ASSERT_TRUE(station.start());
    const auto request = [&] {
        unsigned count = 0;
        return QorGetDtcByStatus(station.handle, amply, nullptr, 0, &count) == QOR_OK;
    };
    EXPECT_LT(delayMs, usualMs(request));
    EXPECT_THAT(QorSetTcpNoDelay(station.handle, 1), IsCause(QOR_OK));
    EXPECT_GT(delayMs, usualMs(request));
    EXPECT_THAT(QorSetTcpNoDelay(station.handle, 0), IsCause(QOR_OK));
    EXPECT_LT(delayMs, usualMs(request));
}

TEST(CInterfaceNoDelay, IsOfALiveHandle) {
    EXPECT_THAT(QorSetTcpNoDelay(nullptr, 1), IsCause(QOR_BAD_HANDLE));
}

}  // namespace
