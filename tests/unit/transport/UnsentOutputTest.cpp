#include "transport/UnsentOutput.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

/// A piece that is joined with no other.
std::string longPiece(char letter) {
    return std::string(UnsentOutput::joinedBytes, letter);
}

TEST(UnsentOutput, WhatIsAppendedComesOutInItsOrderAndOnlyOnce) {
    UnsentOutput output;
    output.append("first ");
    output.append("second");
    EXPECT_EQ(12u, output.size());
    EXPECT_EQ("first second", output.front());

    output.dropFront(3);
    EXPECT_EQ("st second", output.front());
    EXPECT_EQ(9u, output.size());
    output.append("!");
    EXPECT_EQ("st second!", output.front());

    output.dropFront(10);
    EXPECT_TRUE(output.isEmpty());
    output.append("new");
    EXPECT_EQ("new", output.front());
}

TEST(UnsentOutput, ALongPieceIsTakenOverAndConsumedWithoutACopy) {
    UnsentOutput output;
    std::string piece = longPiece('x');
    const char* const memory = piece.data();

    output.append("y");
    output.append(std::move(piece));

    EXPECT_EQ("y", output.front());
    output.dropFront(1);
    EXPECT_EQ(memory, output.front().data());
    output.dropFront(1000);
    EXPECT_EQ(memory + 1000, output.front().data());
}

TEST(UnsentOutput, ManySmallPiecesBecomeFewLongOnes) {
    UnsentOutput output;
    for (int i = 0; i < 100000; ++i) output.append("0123456789abcdef");

    std::size_t pieces = 0;
    for (; !output.isEmpty(); ++pieces) output.dropFront(output.front().size());
    EXPECT_LT(pieces, 30u);
}

TEST(UnsentOutput, AnEmptyPieceIsNothing) {
    UnsentOutput output;
    output.append("");
    EXPECT_TRUE(output.isEmpty());
    output.append("x");
    output.append("");
    output.dropFront(1);
    EXPECT_TRUE(output.isEmpty());
}

TEST(UnsentOutput, WhatIsPutBackStandsInFrontOfWhatCameMeanwhileAndStaysHalfSent) {
    UnsentOutput taken;
    taken.append("abcdef");
    taken.append(longPiece('x'));
    taken.dropFront(2);
    UnsentOutput output;
    output.append("later");

    output.putBack(std::move(taken));

    EXPECT_EQ(4 + UnsentOutput::joinedBytes + 5, output.size());
    EXPECT_EQ("cdef", output.front());
    output.dropFront(4);
    EXPECT_EQ(longPiece('x'), output.front());
    output.dropFront(UnsentOutput::joinedBytes);
    EXPECT_EQ("later", output.front());
}

}  // namespace
