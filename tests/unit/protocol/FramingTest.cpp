// The twelve bytes in front of a payload, and what parsing makes of them.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "ChangedFields.h"
#include "EveryCommand.h"
#include "FieldDump.h"
#include "HexBytes.h"
#include "protocol/IClientCommand.h"

using testing_support::bytesOf;
using testing_support::CommandClass;
using testing_support::forEveryCommand;
using testing_support::hexOf;
using testing_support::wordOf;

namespace {

constexpr std::size_t untouched = 4711;

struct Parsed {
    std::unique_ptr<IExternalCommand> command;
    std::size_t consumed = untouched;

    const ExternalCommand& external() const {
        return dynamic_cast<const ExternalCommand&>(*command);
    }
};

template <class Command>
Parsed parse(const std::string& bytes) {
    Parsed parsed;
    parsed.command = Command().parse(bytes, parsed.consumed);
    return parsed;
}

std::string written(const IExternalCommand& command) {
    std::string bytes;
    command.write(bytes);
    return bytes;
}

const char* const routine3 = "08 00 00 00  01 02 03 04  04 00 00 00  03 00 00 00";

}  // namespace

TEST(Framing, ACommandWithAnEmptyPayloadWritesExactly12BytesTheLastFourBeing0) {
    const std::string bytes = written(CommandSetParamList());
    ASSERT_EQ(bytes.size(), 12u);
    EXPECT_EQ(hexOf(bytes.substr(0, 4)), "05 00 00 00");
    EXPECT_EQ(hexOf(bytes.substr(8)), "00 00 00 00");
}

TEST(Framing, ParsingA7ByteBufferGivesAnEmptyResultAndLeavesConsumedAlone) {
    const Parsed parsed = parse<CommandSetParamList>(bytesOf("05 00 00 00 00 00 00"));
    EXPECT_EQ(parsed.command, nullptr);
    EXPECT_EQ(parsed.consumed, untouched);
}

TEST(Framing, ParsingAnEmptyBufferGivesAnEmptyResult) {
    EXPECT_EQ(parse<CommandPing>("").command, nullptr);
}

TEST(Framing, ParsingAn11ByteBufferWhosePayloadLengthIs0GivesAnEmptyResult) {
    const Parsed parsed = parse<CommandSetParamList>(bytesOf("05 00 00 00  00 00 00 00  00 00 00"));
    EXPECT_EQ(parsed.command, nullptr);
    EXPECT_EQ(parsed.consumed, untouched);
}

TEST(Framing, A12ByteBufferWithPayloadLength0ParsesWhenTheIdMatchesAndGivesConsumed12) {
    const Parsed parsed =
        parse<CommandSetParamList>(bytesOf("05 00 00 00  00 00 00 00  00 00 00 00"));
    ASSERT_NE(parsed.command, nullptr);
    EXPECT_EQ(parsed.consumed, 12u);
}

TEST(Framing, ARecordOfAnotherIdGivesAnEmptyResultEvenWhenTheRestIsWellFormed) {
    const Parsed parsed = parse<CommandPing>(bytesOf(routine3));
    EXPECT_EQ(parsed.command, nullptr);
    EXPECT_EQ(parsed.consumed, untouched);
}

TEST(Framing, APayloadThatEndsOneByteEarlyIsNotTakenYet) {
    std::string bytes = bytesOf(routine3);
    bytes.pop_back();
    const Parsed parsed = parse<CommandEcuToolRoutine>(bytes);
    EXPECT_EQ(parsed.command, nullptr);
    EXPECT_EQ(parsed.consumed, untouched);
}

TEST(Framing, ALengthNearTheTopOfItsRangeDoesNotWrapAround) {
    for (const char* length : {"FF FF FF FF", "F4 FF FF FF", "F3 FF FF FF", "00 00 00 80"}) {
        const std::string head = std::string("08 00 00 00  01 02 03 04  ") + length;
        const Parsed parsed = parse<CommandEcuToolRoutine>(bytesOf(head) + std::string(64, '\0'));
        EXPECT_EQ(parsed.command, nullptr) << length;
        EXPECT_EQ(parsed.consumed, untouched) << length;
    }
}

TEST(Framing, ARecordWithHeader00010003OnAnId3PrototypeKeepsTheReplyFlag) {
    const Parsed reply =
        parse<CommandGetParamInfo>(bytesOf("03 00 01 00  01 02 03 04  00 00 00 00"));
    ASSERT_NE(reply.command, nullptr);
    EXPECT_EQ(reply.external().header(), 0x00010003u);
    EXPECT_TRUE(reply.external().isReply());
}

TEST(Framing, TheSameRecordWithHeader00000003YieldsTheFlagClear) {
    CommandGetParamInfo prototype;
    prototype.stampAsReplyTo(1);
    std::size_t consumed = 0;
    const auto parsed = prototype.parse(bytesOf("03 00 00 00  01 02 03 04  00 00 00 00"), consumed);
    ASSERT_NE(parsed, nullptr);
    EXPECT_EQ(dynamic_cast<const ExternalCommand&>(*parsed).header(), 0x00000003u);
}

TEST(Framing, HeaderBitsOtherThanIdAndReplyFlagAreIgnoredOnReading) {
    const Parsed parsed =
        parse<CommandGetParamInfo>(bytesOf("03 00 FE FF  01 02 03 04  00 00 00 00"));
    ASSERT_NE(parsed.command, nullptr);
    EXPECT_EQ(parsed.external().header(), 0x00000003u);
}

TEST(Framing, TheParsedObjectTakesTheRequestIdOfTheRecord) {
    const Parsed parsed = parse<CommandEcuToolRoutine>(bytesOf(routine3));
    ASSERT_NE(parsed.command, nullptr);
    EXPECT_EQ(parsed.external().requestId(), 0x04030201u);
}

TEST(Framing, BytesAfterTheFirstRecordAreLeftForTheNextParse) {
    const std::string second = "08 00 00 00  05 06 07 08  04 00 00 00  09 00 00 00";
    const std::string both = bytesOf(routine3) + bytesOf(second);
    const Parsed first = parse<CommandEcuToolRoutine>(both);
    ASSERT_NE(first.command, nullptr);
    EXPECT_EQ(first.consumed, 16u);
    const Parsed next = parse<CommandEcuToolRoutine>(both.substr(first.consumed));
    ASSERT_NE(next.command, nullptr);
    EXPECT_EQ(dynamic_cast<CommandEcuToolRoutine&>(*next.command).routine, 9u);
}

TEST(Framing, WriteAppendsToWhatIsThere) {
    std::string bytes = "before";
    CommandSetParamList().write(bytes);
    EXPECT_EQ(bytes.size(), 6u + 12u);
    EXPECT_EQ(bytes.substr(0, 6), "before");
}

TEST(Framing, EveryCommandCountsAsManyBytesAsItWrites) {
    forEveryCommand([](auto kind) {
        using Command = typename decltype(kind)::Type;
        using Record = typename decltype(kind)::Record;
        EXPECT_EQ(Command().recordBytes(), written(Command()).size());
        const Command command(testing_support::changed(Record()));
        EXPECT_EQ(command.recordBytes(), written(command).size());
        EXPECT_EQ(command.payloadBytes() + 12, command.recordBytes());
    });
}

TEST(Framing, ALongRecordIsWrittenIntoRoomOfItsExactSize) {
    CommandDirectCtrl command;
    command.values = std::vector<double>(100000, 1.5);
    const std::string bytes = written(command);
    EXPECT_EQ(bytes.size(), 12u + 16u + 800000u);
    EXPECT_EQ(bytes.capacity(), bytes.size());
}

TEST(Framing, TheLongestRecordIsReadWhole) {
    constexpr unsigned int longest = 0x8000000;
    constexpr unsigned int count = (longest - 12 - 16) / 8;
    std::string bytes = wordOf(7) + wordOf(1) + wordOf(longest - 12) + wordOf(3) + wordOf(1);
    bytes += wordOf(count);
    bytes.resize(longest);
    std::size_t consumed = 0;
    const auto parsed = CommandDirectCtrl().parse(bytes, consumed);
    ASSERT_NE(parsed, nullptr);
    EXPECT_EQ(consumed, longest);
    EXPECT_EQ(dynamic_cast<CommandDirectCtrl&>(*parsed).values.size(), count);
}

TEST(Framing, WritingTheSameCommandTwiceGivesTheSameBytes) {
    const CommandDirectCtrl command({1, 2, {3.0}, "x"});
    EXPECT_EQ(hexOf(written(command)), hexOf(written(command)));
}

TEST(Framing, ThePrototypeStaysUnchangedByAParse) {
    const CommandEcuToolRoutine prototype;
    const std::string before = written(prototype);
    std::size_t consumed = 0;
    ASSERT_NE(prototype.parse(bytesOf(routine3), consumed), nullptr);
    EXPECT_EQ(hexOf(written(prototype)), hexOf(before));
}

TEST(Framing, ExecuteAcceptsEveryCommandAndDoesNothing) {
    forEveryCommand([](auto kind) {
        typename decltype(kind)::Type command;
        const std::string before = written(command);
        EXPECT_TRUE(command.execute(nullptr));
        EXPECT_EQ(hexOf(written(command)), hexOf(before));
    });
}

TEST(Framing, ExactlyThePrototypeOfTheIdAcceptsARecord) {
    for (unsigned int id = 0; id <= 20; ++id) {
        const std::string record = wordOf(id) + wordOf(1) + wordOf(0);
        unsigned int accepted = 0;
        forEveryCommand([&](auto kind) {
            using Command = typename decltype(kind)::Type;
            const Parsed parsed = parse<Command>(record);
            if (!parsed.command) return;
            ++accepted;
            EXPECT_EQ(parsed.command->getId(), id);
            EXPECT_NE(dynamic_cast<const Command*>(parsed.command.get()), nullptr);
        });
        EXPECT_EQ(accepted, id == 13 || id == 20 ? 0u : 1u) << "id " << id;
    }
}

namespace {

class ClientCommandForTest : public CommandEcuToolRoutine, public IClientCommand {
public:
    bool onReply(ICommandReplyer*, ClientExternalOperating*) override { return true; }
    IExternalCommand* createFromPayload(std::string_view bytes) const override {
        return createAs<ClientCommandForTest>(bytes);
    }
};

}  // namespace

TEST(Framing, AClientVariantParsesToItsOwnClass) {
    const Parsed parsed = parse<ClientCommandForTest>(bytesOf(routine3));
    ASSERT_NE(parsed.command, nullptr);
    EXPECT_NE(dynamic_cast<IClientCommand*>(parsed.command.get()), nullptr);
    EXPECT_EQ(dynamic_cast<CommandEcuToolRoutine&>(*parsed.command).routine, 3u);
}
