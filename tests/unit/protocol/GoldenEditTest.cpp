// Hand-made records of the model-edit command, the one with lists of texts and a map.
#include "GoldenVector.h"

using testing_support::expectVector;

TEST(GoldenStartEdit, TheInitialValuesOpenAModel) {
    expectVector<CommandStartEdit>({},
                                   "01 00 00 00"  // id 1
                                   "78 56 34 12"
                                   "24 00 00 00"
                                   "07 00 00 00"    // stage
                                   "01 00 00 00"    // mode
                                   "00 00 00 00"    // path
                                   "FF FF FF FF"    // number
                                   "00 00 00 00"    // files
                                   "00 00 00 00"    // fileNumbers
                                   "00 00 00 00"    // addFiles
                                   "00 00 00 00"    // addFileNumbers
                                   "00 00 00 00");  // info
}

TEST(GoldenStartEdit, EveryListAndTheMapHaveTheirPlace) {
    protocol::StartEdit edit;
    edit.stage = 2;
    edit.mode = 3;
    edit.path = "C:\\m";
    edit.number = 9;
    edit.files = {"a.x", ""};
    edit.fileNumbers = {1, 2};
    edit.addFiles = {"b"};
    edit.addFileNumbers = {0x80000000};
    edit.info = {{"k", "v"}};
    expectVector<CommandStartEdit>(edit,
                                   "01 00 00 00"
                                   "78 56 34 12"
                                   "4E 00 00 00"  // 78 bytes
                                   "02 00 00 00"
                                   "03 00 00 00"
                                   "04 00 00 00 'C:\\m'"
                                   "09 00 00 00"
                                   "02 00 00 00  03 00 00 00 'a.x'  00 00 00 00"  // files
                                   "02 00 00 00  01 00 00 00  02 00 00 00"        // fileNumbers
                                   "01 00 00 00  01 00 00 00 'b'"                 // addFiles
                                   "01 00 00 00  00 00 00 80"                     // addFileNumbers
                                   "01 00 00 00  01 00 00 00 'k'  01 00 00 00 'v'");
}

TEST(GoldenStartEdit, TheMapIsInAscendingOrderOfTheKeysBytes) {
    protocol::StartEdit edit;
    edit.info = {{"\xE4", "4"}, {"b", "3"}, {"B", "2"}, {"", "0"}, {"A", "1"}, {"ba", "5"}};
    expectVector<CommandStartEdit>(edit,
                                   "01 00 00 00"
                                   "78 56 34 12"
                                   "60 00 00 00"  // 96 bytes
                                   "07 00 00 00  01 00 00 00  00 00 00 00  FF FF FF FF"
                                   "00 00 00 00  00 00 00 00  00 00 00 00  00 00 00 00"
                                   "06 00 00 00"
                                   "00 00 00 00       01 00 00 00 '0'"
                                   "01 00 00 00 'A'   01 00 00 00 '1'"
                                   "01 00 00 00 'B'   01 00 00 00 '2'"
                                   "01 00 00 00 'b'   01 00 00 00 '3'"
                                   "02 00 00 00 'ba'  01 00 00 00 '5'"
                                   "01 00 00 00 E4    01 00 00 00 '4'");
}
