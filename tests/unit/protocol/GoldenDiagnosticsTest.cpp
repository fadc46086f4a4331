// Hand-made records of the commands about trouble codes, KWP, CAN, message boxes and the model.
#include "GoldenVector.h"

using testing_support::expectVector;

TEST(GoldenGetDtc, AnEmptyListIsTheCount0AndTheFlagWord) {
    expectVector<CommandGetDTC>({{}, true},
                                "09 00 00 00  78 56 34 12  08 00 00 00"
                                "00 00 00 00"    // no codes
                                "01 00 00 00");  // option
}

TEST(GoldenGetDtc, TheFlagFollowsTheRecordsOfTheList) {
    expectVector<CommandGetDTC>(
        {{{0x0301, 0x2F, "P0301", "Misfire", "", "x"}, {0xFFFFFFFF, 0, "", "", "", ""}}, false},
        "09 00 01 00"  // id 9, reply flag
        "78 56 34 12"
        "45 00 00 00"  // 69 bytes
        "02 00 00 00"  // two codes
        "01 03 00 00"  // code
        "2F 00 00 00"  // status
        "05 00 00 00 'P0301'"
        "07 00 00 00 'Misfire'"
        "00 00 00 00"
        "01 00 00 00 'x'"
        "FF FF FF FF"  // second code
        "00 00 00 00"
        "00 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00"
        "00 00 00 00",  // option
        true);
}

TEST(GoldenRedirectUi, CaptionTextStyleAndAnEmptyResult) {
    expectVector<CommandRedirectUI>({"QOR", "Go on?", 0x24, 0},
                                    "0A 00 00 00"  // id 10
                                    "78 56 34 12"
                                    "19 00 00 00"
                                    "03 00 00 00 'QOR'"
                                    "06 00 00 00 'Go on?'"
                                    "24 00 00 00"    // style: question, yes and no
                                    "00 00 00 00");  // no choice yet
}

TEST(GoldenRedirectUi, TheChoiceGoesBackInTheLastWord) {
    expectVector<CommandRedirectUI>({"", "", 0x24, 6},
                                    "0A 00 00 00  78 56 34 12  10 00 00 00"
                                    "00 00 00 00  00 00 00 00  24 00 00 00  06 00 00 00");
}

TEST(GoldenGetHex, AWordAndFourTexts) {
    expectVector<CommandGetHex>({7, "m.sde", "", "c", "\xE4"},
                                "0B 00 00 00"  // id 11
                                "78 56 34 12"
                                "1B 00 00 00"
                                "07 00 00 00"
                                "05 00 00 00 'm.sde'"
                                "00 00 00 00"
                                "01 00 00 00 'c'"
                                "01 00 00 00 E4");  // a letter of the 8-bit code page
}

TEST(GoldenExecKwp, TheRawDataMayHoldZeroBytes) {
    expectVector<CommandExecKwp>({2, 0x1A, std::string("\x90\0\xFF", 3), 700, false},
                                 "0F 00 00 00"  // id 15
                                 "78 56 34 12"
                                 "17 00 00 00"
                                 "02 00 00 00"           // channel
                                 "1A 00 00 00"           // service
                                 "03 00 00 00 90 00 FF"  // data
                                 "BC 02 00 00"           // timeoutMs 700
                                 "00 00 00 00");         // failed
}

TEST(GoldenExecKwp, AFailedAnswerSetsTheLastWord) {
    expectVector<CommandExecKwp>({1, 0x7F, "", 0, true},
                                 "0F 00 01 00  78 56 34 12  14 00 00 00"
                                 "01 00 00 00  7F 00 00 00  00 00 00 00  00 00 00 00  01 00 00 00",
                                 true);
}

TEST(GoldenExecKwp, TheInitialChannelIs1) {
    expectVector<CommandExecKwp>({},
                                 "0F 00 00 00  78 56 34 12  14 00 00 00"
                                 "01 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00");
}

TEST(GoldenCanBusData, TwoItemsOfTwoWordsEachWithSignedValues) {
    expectVector<CommandCanBusData>({{{0x100, -1}, {0x1FFFFFFF, 1000}}},
                                    "11 00 00 00"  // id 17
                                    "78 56 34 12"
                                    "14 00 00 00"
                                    "02 00 00 00"
                                    "00 01 00 00  FF FF FF FF"    // value -1
                                    "FF FF FF 1F  E8 03 00 00");  // value 1000
}

TEST(GoldenCanBusData, NoItemsAreJustTheCount) {
    expectVector<CommandCanBusData>({}, "11 00 00 00  78 56 34 12  04 00 00 00  00 00 00 00");
}

TEST(GoldenCanBusSend, TwoNumbersAndTheBytesOfTheMessage) {
    expectVector<CommandCanBusSend>({1, 0x18DAF110, std::string("\0\x01\x02", 3)},
                                    "13 00 00 00"  // id 19
                                    "78 56 34 12"
                                    "0F 00 00 00"
                                    "01 00 00 00"
                                    "10 F1 DA 18"
                                    "03 00 00 00 00 01 02");
}
