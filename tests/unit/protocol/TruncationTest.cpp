// Payloads that end too early: what is missing keeps its initial value, nothing fails.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "ChangedFields.h"
#include "EveryCommand.h"
#include "FieldDump.h"
#include "HexBytes.h"

using testing_support::bytesOf;
using testing_support::changed;
using testing_support::fieldsOf;
using testing_support::forEveryCommand;
using testing_support::payloadOf;
using testing_support::recordFrom;

namespace {

// Where in the payload each field ends.
class FieldEnds {
public:
    template <class T>
    void operator()(const char*, const T& field) {
        wire::Writer(written_).put(field);
        ends.push_back(written_.size());
    }

    std::vector<std::size_t> ends;

private:
    std::string written_;
};

template <class Record>
std::vector<std::size_t> fieldEndsOf(const Record& record) {
    FieldEnds visitor;
    Record::fields(record, visitor);
    return visitor.ends;
}

template <class Record>
void expectFirstFieldsOnly(const std::string& payload, const Record& whole, std::size_t fields) {
    const std::vector<std::string> initial = fieldsOf(Record());
    std::vector<std::string> expected = fieldsOf(whole);
    for (std::size_t i = fields; i < expected.size(); ++i) expected[i] = initial[i];
    EXPECT_EQ(fieldsOf(recordFrom<Record>(payload)), expected) << fields << " fields present";
}

// A text that is cut leaves its bytes to the next field, which may then be refused as a list of
// millions. What came before stands all the same.
template <class Record>
Record readAsFarAsPossible(const std::string& payload) {
    Record record;
    try {
        wire::Reader(payload).get(record);
    } catch (const std::length_error&) {
    }
    return record;
}

}  // namespace

TEST(Truncation, TheTestsRecordsDifferFromTheInitialValuesInEveryField) {
    forEveryCommand([](auto kind) {
        using Record = typename decltype(kind)::Record;
        const std::vector<std::string> initial = fieldsOf(Record());
        const std::vector<std::string> whole = fieldsOf(changed(Record()));
        ASSERT_EQ(initial.size(), whole.size());
        for (std::size_t i = 0; i < whole.size(); ++i) EXPECT_NE(initial[i], whole[i]);
    });
}

TEST(Truncation, APayloadCutAtAnyFieldBoundaryLeavesTheRestAtItsInitialValues) {
    forEveryCommand([](auto kind) {
        using Record = typename decltype(kind)::Record;
        const Record whole = changed(Record());
        const std::string payload = payloadOf(whole);
        expectFirstFieldsOnly("", whole, 0);
        std::size_t fields = 0;
        for (const std::size_t end : fieldEndsOf(whole))
            expectFirstFieldsOnly(payload.substr(0, end), whole, ++fields);
    });
}

TEST(Truncation, TheFieldsBeforeACutAnywhereAreReadInFull) {
    forEveryCommand([](auto kind) {
        using Record = typename decltype(kind)::Record;
        const Record whole = changed(Record());
        const std::string payload = payloadOf(whole);
        const std::vector<std::string> expected = fieldsOf(whole);
        const std::vector<std::size_t> ends = fieldEndsOf(whole);
        for (std::size_t cut = 0; cut < payload.size(); ++cut) {
            const auto read = fieldsOf(readAsFarAsPossible<Record>(payload.substr(0, cut)));
            for (std::size_t i = 0; i < ends.size() && ends[i] <= cut; ++i)
                EXPECT_EQ(read[i], expected[i]) << "cut at " << cut;
        }
    });
}

TEST(Truncation, BytesBehindTheLastFieldAreIgnored) {
    forEveryCommand([](auto kind) {
        using Record = typename decltype(kind)::Record;
        const Record whole = changed(Record());
        // Three bytes: too few for one more word of the list without a count.
        EXPECT_EQ(fieldsOf(recordFrom<Record>(payloadOf(whole) + "xyz")), fieldsOf(whole));
    });
}

TEST(Truncation, AnEcuSegmentPayloadWithoutTheFlagWordReadsAsFlagFalse) {
    const auto read =
        recordFrom<protocol::EcuSegment>(bytesOf("01 00 00 00  0B 00 00 00 'WorkingPage'"));
    EXPECT_EQ(read.word, 1u);
    EXPECT_EQ(read.segment, "WorkingPage");
    EXPECT_FALSE(read.flag);
}

TEST(Truncation, AnEmptyPayloadOfParamInfoHasNoIndexAndThreeArrays) {
    const auto read = recordFrom<protocol::ParamInfo>("");
    EXPECT_EQ(read.paramIndex, -1);
    EXPECT_TRUE(read.threeArrays);
}

TEST(Truncation, SetParamListWithThreeIndicesIsExactly12PayloadBytesAndWithNoneEmpty) {
    EXPECT_EQ(payloadOf(protocol::SetParamList{{{1, 2, 3}}}).size(), 12u);
    EXPECT_EQ(payloadOf(protocol::SetParamList()), "");
}
