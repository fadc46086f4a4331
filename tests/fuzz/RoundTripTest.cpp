// Random records survive the wire unchanged.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include "FuzzCases.h"
#include "RandomRecord.h"
#include "unit/protocol/EveryCommand.h"
#include "unit/protocol/FieldDump.h"

using testing_support::fieldsOf;
using testing_support::forEveryCommand;
using testing_support::payloadOf;
using testing_support::recordFrom;

TEST(RoundTrip, EveryRandomRecordIsReadBackFieldByField) {
    std::mt19937 random(fuzz::seed);
    const unsigned int cases = fuzz::caseCount(3000);
    forEveryCommand([&](auto kind) {
        using Record = typename decltype(kind)::Record;
        for (unsigned int i = 0; i < cases; ++i) {
            const auto record = fuzz::randomRecord<Record>(random);
            const std::string payload = payloadOf(record);
            const auto read = recordFrom<Record>(payload);
            ASSERT_EQ(fieldsOf(read), fieldsOf(record)) << "case " << i;
            ASSERT_EQ(payloadOf(read), payload) << "case " << i;
            ASSERT_EQ(wire::encodedBytes(record), payload.size()) << "case " << i;
        }
    });
}

TEST(RoundTrip, EveryRandomCommandIsParsedBackWithItsHead) {
    std::mt19937 random(fuzz::seed);
    const unsigned int cases = fuzz::caseCount(100);
    forEveryCommand([&](auto kind) {
        using Command = typename decltype(kind)::Type;
        using Record = typename decltype(kind)::Record;
        const Command prototype;
        for (unsigned int i = 0; i < cases; ++i) {
            Command command(fuzz::randomRecord<Record>(random));
            if (i % 2 == 1) command.stampAsReplyTo(static_cast<std::uint32_t>(random()));
            std::string bytes;
            command.write(bytes);
            std::size_t consumed = 0;
            const auto parsed = prototype.parse(bytes + "tail", consumed);
            ASSERT_NE(parsed, nullptr) << "case " << i;
            ASSERT_EQ(consumed, bytes.size());
            std::string again;
            parsed->write(again);
            ASSERT_EQ(again, bytes) << "case " << i;
        }
    });
}
