// One record of any id: what is made of it is written and made again the same.
#include <memory>

#include "protocol/Commands.h"
#include "protocol/RecordStream.h"
#include "Target.h"

namespace {

/// Beyond the bytes of the record; more are elements that were announced only, and cost time.
constexpr std::size_t maxMadeUpBytes = 4000;
constexpr std::uint32_t idCount = 21;  // one unassigned, one behind the last

template <class Command>
void tryAs(const std::string& record, bool isReply) {
    static const Command prototype;
    std::size_t consumed = 0;
    const auto parsed = prototype.parse(record, consumed);
    FUZZ_REQUIRE(consumed == record.size());
    if (!parsed) return;
    const auto& command = dynamic_cast<const Command&>(*parsed);
    FUZZ_REQUIRE(command.getId() == Command::id && command.isReply() == isReply);
    if (command.recordBytes() > record.size() + maxMadeUpBytes) return;
    std::string written;
    command.write(written);
    FUZZ_REQUIRE(written.size() == command.recordBytes());
    const auto again = prototype.parse(written, consumed);
    FUZZ_REQUIRE(again != nullptr && consumed == written.size());
    const auto& second = dynamic_cast<const Command&>(*again);
    std::string writtenAgain;
    second.write(writtenAgain);
    FUZZ_REQUIRE(writtenAgain == written);
}

template <class Command>
void refuses(const std::string& record) {
    static const Command prototype;
    std::size_t consumed = 0;
    FUZZ_REQUIRE(prototype.parse(record, consumed) == nullptr && consumed == 0);
}

void tryOne(std::string_view bytes) {
    fuzz::Input input(bytes);
    const std::uint32_t id = input.below(idCount);
    const std::uint32_t flags = input.byte();
    const bool isReply = (flags & 1) != 0;
    const std::string payload(input.rest());
    std::string record;
    wire::Writer head(record);
    // Every bit but those of the id and the reply flag is to be ignored.
    const std::uint32_t header =
        id | (isReply ? ExternalCommand::replyFlag : 0) | (flags >> 1) << 25;
    head.put(header);
    head.put(std::uint32_t{0x12345678});
    head.put(payload);  // a text is its length and its bytes, as a payload is
    FUZZ_REQUIRE(protocol::recordAt(record, 0).state == protocol::StreamState::complete);
    FUZZ_REQUIRE(protocol::recordAt(record, 0).length == record.size());
#define QOR_TRY(commandId, Class, Record) \
    if (id == (commandId))                \
        tryAs<Class>(record, isReply);    \
    else                                  \
        refuses<Class>(record);
    QOR_COMMANDS(QOR_TRY)
#undef QOR_TRY
    std::string cut = record.substr(0, record.size() - 1);
    FUZZ_REQUIRE(protocol::recordAt(cut, 0).state == protocol::StreamState::incomplete);
}

const fuzz::Registered registered({"record", tryOne});

}  // namespace
