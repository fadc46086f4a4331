// Hand-made records of the commands about parameters and their values.
#include <limits>

#include "GoldenVector.h"

using testing_support::expectVector;

TEST(GoldenGetParamInfo, ARequestCarriesTheNameAndTheInitialValues) {
    protocol::ParamInfo info;
    info.name = "N";
    expectVector<CommandGetParamInfo>(info,
                                      "03 00 00 00"  // id 3
                                      "78 56 34 12"
                                      "29 00 00 00"              // 41 bytes
                                      "01 00 00 00 'N'"          // name
                                      "00 00 00 00"              // first text
                                      "00 00 00 00"              // second text
                                      "00 00 00 00"              // third text
                                      "00 00 00 00 00 00 00 00"  // first limit 0.0
                                      "00 00 00 00 00 00 00 00"  // second limit 0.0
                                      "FF FF FF FF"              // index -1
                                      "01 00 00 00");            // three arrays
}

TEST(GoldenGetParamInfo, AnAnswerCarriesTextsLimitsAndIndex) {
    expectVector<CommandGetParamInfo>({"nEng", "Speed", "rpm", "g", -2.5, 8000.0, 17, false},
                                      "03 00 01 00"  // id 3, reply flag
                                      "78 56 34 12"
                                      "35 00 00 00"              // 53 bytes
                                      "04 00 00 00 'nEng'"       // name
                                      "05 00 00 00 'Speed'"      // first text
                                      "03 00 00 00 'rpm'"        // second text
                                      "01 00 00 00 'g'"          // third text
                                      "00 00 00 00 00 00 04 C0"  // first limit -2.5
                                      "00 00 00 00 00 40 BF 40"  // second limit 8000.0
                                      "11 00 00 00"              // index 17
                                      "00 00 00 00",             // one array
                                      true);
}

TEST(GoldenSetParamList, NoIndicesMakeAnEmptyPayload) {
    expectVector<CommandSetParamList>({}, "05 00 00 00  78 56 34 12  00 00 00 00");
}

TEST(GoldenSetParamList, ThreeIndicesFollowOneAnotherWithoutACount) {
    expectVector<CommandSetParamList>({{{1, 0x100, 0xFFFFFFF6}}},
                                      "05 00 00 00  78 56 34 12  0C 00 00 00"
                                      "01 00 00 00  00 01 00 00  F6 FF FF FF");
}

TEST(GoldenReceiveParamData, ANegativeIndexReportsTheStateOfAConnect) {
    expectVector<CommandReceiveParamData>({-10, 1.0},
                                          "06 00 00 00  78 56 34 12  0C 00 00 00"
                                          "F6 FF FF FF"                // index -10
                                          "00 00 00 00 00 00 F0 3F");  // 1.0
}

TEST(GoldenReceiveParamData, AValueKeepsAllBitsOfItsFraction) {
    expectVector<CommandReceiveParamData>({300, 0.1},
                                          "06 00 00 00  78 56 34 12  0C 00 00 00"
                                          "2C 01 00 00"
                                          "9A 99 99 99 99 99 B9 3F");  // 0.1
}

TEST(GoldenReceiveParamData, NegativeZeroKeepsItsSign) {
    expectVector<CommandReceiveParamData>({0, -0.0},
                                          "06 00 00 00  78 56 34 12  0C 00 00 00"
                                          "00 00 00 00  00 00 00 00 00 00 00 80");
}

TEST(GoldenDirectCtrl, AReadHasNoValuesAndTheName) {
    expectVector<CommandDirectCtrl>({17, protocol::DirectCtrl::readValues, {}, "nEng"},
                                    "07 00 00 00"  // id 7
                                    "78 56 34 12"
                                    "14 00 00 00"
                                    "11 00 00 00"           // index
                                    "01 00 00 00"           // operation 1
                                    "00 00 00 00"           // no values
                                    "04 00 00 00 'nEng'");  // name
}

TEST(GoldenDirectCtrl, AWriteCarriesNotANumberAndTheInfinities) {
    using Limits = std::numeric_limits<double>;
    expectVector<CommandDirectCtrl>(
        {0xFFFFFFFF,
         protocol::DirectCtrl::writeValues,
         {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), -0.0},
         ""},
        "07 00 00 00  78 56 34 12  30 00 00 00"
        "FF FF FF FF"              // index with all bits set
        "04 00 00 00"              // operation 4
        "04 00 00 00"              // four values
        "00 00 00 00 00 00 F8 7F"  // not a number
        "00 00 00 00 00 00 F0 7F"  // infinity
        "00 00 00 00 00 00 F0 FF"  // -infinity
        "00 00 00 00 00 00 00 80"  // -0.0
        "00 00 00 00");            // no name
}

TEST(GoldenDirectCtrl, ADynamicWriteCarriesTheTextInPlaceOfTheName) {
    expectVector<CommandDirectCtrl>({2, protocol::DirectCtrl::writeDynamic, {}, "12;x"},
                                    "07 00 00 00  78 56 34 12  14 00 00 00"
                                    "02 00 00 00  05 00 00 00  00 00 00 00"
                                    "04 00 00 00 '12;x'");
}

TEST(GoldenStaticParam, AReadRequestHasThreeEmptyArrays) {
    expectVector<CommandStaticParam>({5, protocol::StaticParam::readArrays, {}, {}, {}},
                                     "0C 00 00 00"  // id 12
                                     "78 56 34 12"
                                     "14 00 00 00"
                                     "05 00 00 00  01 00 00 00"
                                     "00 00 00 00  00 00 00 00  00 00 00 00");
}

TEST(GoldenStaticParam, TheThreeArraysStandInTheOrderOfTheCall) {
    expectVector<CommandStaticParam>(
        {5, protocol::StaticParam::writeArrays, {1.0}, {2.0, 0.5}, {3.0}},
        "0C 00 00 00  78 56 34 12  34 00 00 00"
        "05 00 00 00"                             // index
        "02 00 00 00"                             // operation 2
        "01 00 00 00  00 00 00 00 00 00 F0 3F"    // first: 1.0
        "02 00 00 00  00 00 00 00 00 00 00 40"    // second: 2.0
        "             00 00 00 00 00 00 E0 3F"    //         0.5
        "01 00 00 00  00 00 00 00 00 00 08 40");  // third: 3.0
}

TEST(GoldenReadTogether, TwoParametersWithUnequalValueLists) {
    expectVector<CommandReadTogether>({{3, 4}, {{1.0, -2.5}, {}}, {"a", "bc"}},
                                      "12 00 00 00"  // id 18
                                      "78 56 34 12"
                                      "37 00 00 00"                            // 55 bytes
                                      "02 00 00 00  03 00 00 00  04 00 00 00"  // two indices
                                      "02 00 00 00"              // two lists of values
                                      "02 00 00 00"              // the first has two
                                      "00 00 00 00 00 00 F0 3F"  // 1.0
                                      "00 00 00 00 00 00 04 C0"  // -2.5
                                      "00 00 00 00"              // the second is empty
                                      "02 00 00 00"              // two names
                                      "01 00 00 00 'a'"
                                      "02 00 00 00 'bc'");
}

TEST(GoldenReadTogether, NothingToReadIsThreeZeroCounts) {
    expectVector<CommandReadTogether>({},
                                      "12 00 00 00  78 56 34 12  0C 00 00 00"
                                      "00 00 00 00  00 00 00 00  00 00 00 00");
}
