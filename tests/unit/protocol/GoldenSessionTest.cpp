// Hand-made records of the commands that open, watch and end a session.
#include "GoldenVector.h"

using testing_support::expectVector;

TEST(GoldenPing, ARequestCarriesStatus0) {
    expectVector<CommandPing>({0},
                              "00 00 00 00"    // id 0
                              "78 56 34 12"    // request id
                              "04 00 00 00"    // payload length
                              "00 00 00 00");  // status
}

TEST(GoldenPing, AnAcknowledgementIsAReplyWithItsStatus) {
    expectVector<CommandPing>({protocol::Ping::notHandled},
                              "00 00 01 00"  // id 0, reply flag
                              "78 56 34 12"
                              "04 00 00 00"
                              "02 00 00 00",  // not handled
                              true);
}

TEST(GoldenPing, AStatusWithFourDifferentBytesIsLittleEndian) {
    expectVector<CommandPing>({0x89ABCDEF}, "00 00 00 00  78 56 34 12  04 00 00 00  EF CD AB 89");
}

TEST(GoldenShutdown, BothOptionsMakeFlags6) {
    using protocol::Shutdown;
    expectVector<CommandShutdown>({Shutdown::firstOption | Shutdown::secondOption},
                                  "04 00 00 00  78 56 34 12  04 00 00 00"
                                  "06 00 00 00");
}

TEST(GoldenShutdown, TheSecondOptionAloneMakesFlags2) {
    expectVector<CommandShutdown>({protocol::Shutdown::secondOption},
                                  "04 00 00 00  78 56 34 12  04 00 00 00"
                                  "02 00 00 00");
}

TEST(GoldenEcuToolRoutine, Routine3ClearsTheTroubleCodes) {
    expectVector<CommandEcuToolRoutine>({protocol::EcuToolRoutine::clearDtc},
                                        "08 00 00 00  78 56 34 12  04 00 00 00"
                                        "03 00 00 00");
}

TEST(GoldenKwpConnect, EveryFieldHasItsPlace) {
    protocol::KwpConnect connect;
    connect.protocol = 4;
    connect.protocolOption = 0x11223344;
    connect.optionFlag = false;
    connect.kLineBaudRate = 9600;
    connect.canBaudRate = 500000;
    connect.refreshPeriodMs = 250;
    connect.mode = protocol::KwpConnect::modeSecurityAccess;
    connect.canRequestId = 0x7E0;
    connect.canResponseId = 0x7E8;
    connect.addressByte1 = 0x10;
    connect.addressByte2 = 0xF1;
    connect.addressWord = 0x1234;
    connect.reservedWord = 0;
    connect.extraFlag = false;
    connect.securityDll = "C:\\s.dll";
    connect.finalFlag = false;
    expectVector<CommandKwpConnect>(connect,
                                    "02 00 00 00"  // id 2
                                    "78 56 34 12"
                                    "48 00 00 00"    // 15 words, a length word and 8 characters
                                    "04 00 00 00"    // protocol
                                    "44 33 22 11"    // protocolOption
                                    "00 00 00 00"    // optionFlag
                                    "80 25 00 00"    // kLineBaudRate 9600
                                    "20 A1 07 00"    // canBaudRate 500000
                                    "FA 00 00 00"    // refreshPeriodMs
                                    "30 00 00 00"    // mode
                                    "E0 07 00 00"    // canRequestId
                                    "E8 07 00 00"    // canResponseId
                                    "10 00 00 00"    // addressByte1, zero-extended
                                    "F1 00 00 00"    // addressByte2, not sign-extended
                                    "34 12 00 00"    // addressWord
                                    "00 00 00 00"    // reserved
                                    "00 00 00 00"    // extraFlag
                                    "08 00 00 00"    // length of securityDll
                                    "'C:\\s.dll'"    // securityDll
                                    "00 00 00 00");  // finalFlag
}

TEST(GoldenKwpConnect, TheInitialValuesAreThoseOfQor) {
    expectVector<CommandKwpConnect>({},
                                    "02 00 00 00"
                                    "78 56 34 12"
                                    "40 00 00 00"
                                    "01 00 00 00"    // protocol
                                    "01 00 00 00"    // protocolOption
                                    "01 00 00 00"    // optionFlag
                                    "A0 28 00 00"    // kLineBaudRate 10400
                                    "48 E8 01 00"    // canBaudRate 125000
                                    "00 00 00 00"    // refreshPeriodMs
                                    "00 00 00 00"    // mode
                                    "FF FF FF FF"    // canRequestId: none
                                    "FF FF FF FF"    // canResponseId: none
                                    "FF 00 00 00"    // addressByte1
                                    "FF 00 00 00"    // addressByte2
                                    "FF 00 00 00"    // addressWord 255
                                    "00 00 00 00"    // reserved
                                    "01 00 00 00"    // extraFlag
                                    "00 00 00 00"    // securityDll: empty
                                    "01 00 00 00");  // finalFlag
}

TEST(GoldenEcuSegment, WordThenSegmentThenFlag) {
    expectVector<CommandEcuSegment>({1, "WorkingPage", true},
                                    "0E 00 00 00"  // id 14
                                    "78 56 34 12"
                                    "17 00 00 00"
                                    "01 00 00 00"
                                    "0B 00 00 00 'WorkingPage'"
                                    "01 00 00 00");
}

TEST(GoldenEcuSegment, TheInitialWordIs1) {
    expectVector<CommandEcuSegment>({},
                                    "0E 00 00 00  78 56 34 12  0C 00 00 00"
                                    "01 00 00 00  00 00 00 00  00 00 00 00");
}

TEST(GoldenCanBusConnect, TheInitialSettingIs250000WithTheFirstFlagSet) {
    expectVector<CommandCanBusConnect>({},
                                       "10 00 00 00"  // id 16
                                       "78 56 34 12"
                                       "10 00 00 00"
                                       "00 00 00 00"    // busMode
                                       "90 D0 03 00"    // busParam 250000
                                       "01 00 00 00"    // firstFlag
                                       "00 00 00 00");  // secondFlag
}

TEST(GoldenCanBusConnect, TheAlternativeModeWithTheFlagsTheOtherWayRound) {
    expectVector<CommandCanBusConnect>({1, 500000, false, true},
                                       "10 00 00 00  78 56 34 12  10 00 00 00"
                                       "01 00 00 00  20 A1 07 00  00 00 00 00  01 00 00 00");
}
