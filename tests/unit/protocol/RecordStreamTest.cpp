// Finding the records in a stream that arrives in any pieces.
#include "protocol/RecordStream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "HexBytes.h"

using protocol::FramedRecord;
using protocol::maxRecordBytes;
using protocol::recordAt;
using protocol::StreamState;
using testing_support::bytesOf;
using testing_support::wordOf;

namespace {

std::string headOf(unsigned int requestId, std::size_t payloadLength) {
    return wordOf(3) + wordOf(requestId) + wordOf(static_cast<unsigned int>(payloadLength));
}

// The request ids of the records, as a receiver finds them that looks after each piece.
std::vector<std::uint32_t> idsFoundIn(const std::vector<std::string>& pieces) {
    std::vector<std::uint32_t> ids;
    std::string pending;
    for (const std::string& piece : pieces) {
        pending += piece;
        std::size_t position = 0;
        for (FramedRecord record = recordAt(pending, position);
             record.state == StreamState::complete; record = recordAt(pending, position)) {
            ids.push_back(record.requestId);
            position += record.length;
        }
        pending.erase(0, position);
    }
    return ids;
}

const std::vector<std::uint32_t> threeIds = {0xA1, 0xB2, 0xC3};

std::string threeRecords() {
    return headOf(0xA1, 4) + "abcd" + headOf(0xB2, 0) + headOf(0xC3, 1) + "x";
}

}  // namespace

TEST(RecordStream, AStreamSplitAtAnyByteGivesTheSameRecords) {
    const std::string stream = threeRecords();
    for (std::size_t split = 0; split <= stream.size(); ++split)
        EXPECT_EQ(idsFoundIn({stream.substr(0, split), stream.substr(split)}), threeIds) << split;
}

TEST(RecordStream, AStreamInSingleBytesGivesTheSameRecords) {
    std::vector<std::string> bytes;
    for (const char byte : threeRecords()) bytes.emplace_back(1, byte);
    EXPECT_EQ(idsFoundIn(bytes), threeIds);
}

TEST(RecordStream, AnIncompleteRecordIsIncompleteAtEveryLength) {
    const std::string record = headOf(7, 5) + "hello";
    for (std::size_t present = 0; present < record.size(); ++present)
        EXPECT_EQ(recordAt(record.substr(0, present), 0).state, StreamState::incomplete) << present;
    const FramedRecord whole = recordAt(record, 0);
    EXPECT_EQ(whole.state, StreamState::complete);
    EXPECT_EQ(whole.length, 17u);
    EXPECT_EQ(whole.requestId, 7u);
}

TEST(RecordStream, NothingIsReadBehindAnIncompleteHead) {
    const std::string before(40, 'x');
    const std::string head = headOf(7, 5);
    for (std::size_t present = 0; present < head.size(); ++present) {
        const std::string all = before + head.substr(0, present);
        const std::string exact(all.data(), all.size());  // a sanitizer sees its end
        EXPECT_EQ(recordAt(exact, before.size()).state, StreamState::incomplete) << present;
    }
}

TEST(RecordStream, APositionAtTheEndIsIncomplete) {
    const std::string record = headOf(7, 0);
    EXPECT_EQ(recordAt(record, record.size()).state, StreamState::incomplete);
}

TEST(RecordStream, ARecordIsFoundAtItsPositionWhateverStandsBeforeIt) {
    const FramedRecord record = recordAt("junk!" + headOf(9, 2) + "ab" + "more", 5);
    EXPECT_EQ(record.state, StreamState::complete);
    EXPECT_EQ(record.length, 14u);
    EXPECT_EQ(record.requestId, 9u);
}

TEST(RecordStream, ARecordOfAnUnknownIdIsARecordAllTheSame) {
    EXPECT_EQ(recordAt(bytesOf("FF FF FF FF  01 00 00 00  00 00 00 00"), 0).state,
              StreamState::complete);
}

TEST(RecordStream, TheLongestRecordIsTakenExactlyAtTheBound) {
    const std::size_t longest = maxRecordBytes - 12;
    std::string stream = headOf(1, longest);
    EXPECT_EQ(recordAt(stream, 0).state, StreamState::incomplete);
    stream.resize(maxRecordBytes - 1);
    EXPECT_EQ(recordAt(stream, 0).state, StreamState::incomplete);
    stream.resize(maxRecordBytes);
    const FramedRecord record = recordAt(stream, 0);
    EXPECT_EQ(record.state, StreamState::complete);
    EXPECT_EQ(record.length, maxRecordBytes);
}

TEST(RecordStream, OneByteMoreThanTheBoundIsHopelessAsSoonAsTheHeadIsThere) {
    const std::string head = headOf(1, maxRecordBytes - 12 + 1);
    EXPECT_EQ(recordAt(head.substr(0, 11), 0).state, StreamState::incomplete);
    EXPECT_EQ(recordAt(head, 0).state, StreamState::hopeless);
}

TEST(RecordStream, AbsurdLengthsAreHopeless) {
    for (const std::size_t length : {0x80000000u, 0xFFFFFFF4u, 0xFFFFFFF3u, 0xFFFFFFFFu})
        EXPECT_EQ(recordAt(headOf(1, length) + "abc", 0).state, StreamState::hopeless) << length;
}
