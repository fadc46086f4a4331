#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "FieldDump.h"
#include "HexBytes.h"
#include "protocol/Commands.h"

namespace testing_support {

/// The request id that stands in all vectors: the bytes 78 56 34 12.
constexpr std::uint32_t goldenRequestId = 0x12345678;

/// The bytes that the command writes, with the golden request id in place of its random one.
inline std::string writtenWithGoldenId(const ExternalCommand& command) {
    std::string bytes;
    command.write(bytes);
    if (bytes.size() >= 8) bytes.replace(4, 4, wordOf(goldenRequestId));
    return bytes;
}

template <class Command>
std::string writtenFrom(const typename Command::Payload& fields, bool isReply) {
    Command command(fields);
    if (isReply) command.stampAsReplyTo(goldenRequestId);
    return writtenWithGoldenId(command);
}

template <class Command>
void expectRead(const std::string& record, const typename Command::Payload& fields, bool isReply) {
    std::size_t consumed = 0;
    const std::unique_ptr<IExternalCommand> parsed = Command().parse(record, consumed);
    ASSERT_NE(parsed, nullptr);
    EXPECT_EQ(consumed, record.size());
    const auto* const command = dynamic_cast<const Command*>(parsed.get());
    ASSERT_NE(command, nullptr) << "parsed as another class";
    EXPECT_EQ(fieldsOf(command->payload()), fieldsOf(fields));
    EXPECT_EQ(command->requestId(), goldenRequestId);
    EXPECT_EQ(command->isReply(), isReply);
}

/// Drives one vector both ways: these fields write exactly this record, and this record reads as
/// exactly these fields. `hex` is the whole record, head and all.
template <class Command>
void expectVector(const typename Command::Payload& fields, const std::string& hex,
                  bool isReply = false) {
    const std::string record = bytesOf(hex);
    EXPECT_EQ(hexOf(writtenFrom<Command>(fields, isReply)), hexOf(record));
    expectRead<Command>(record, fields, isReply);
}

}  // namespace testing_support
