// Entry of the coverage-guided fuzzer: the input is a stream of records, received as a transport
// does. Each complete record is offered to all prototypes, and what was parsed is written again.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "protocol/Commands.h"
#include "protocol/RecordStream.h"

namespace {

using Prototypes = std::vector<std::unique_ptr<IExternalCommand>>;

Prototypes makePrototypes() {
    Prototypes all;
#define QOR_ADD_PROTOTYPE(commandId, Class, Record) all.push_back(std::make_unique<Class>());
    QOR_COMMANDS(QOR_ADD_PROTOTYPE)
#undef QOR_ADD_PROTOTYPE
    return all;
}

void require(bool condition) {
    if (!condition) std::abort();
}

void offer(const Prototypes& prototypes, const std::string& record) {
    for (const auto& prototype : prototypes) {
        std::size_t consumed = 0;
        const auto parsed = prototype->parse(record, consumed);
        require(consumed == 0 || consumed == record.size());
        if (!parsed) continue;
        require(parsed->getId() == prototype->getId());
        std::string written;
        parsed->write(written);
        require(prototype->parse(written, consumed) != nullptr && consumed == written.size());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Prototypes prototypes = makePrototypes();
    const std::string stream(reinterpret_cast<const char*>(data), size);
    std::size_t position = 0;
    for (;;) {
        const protocol::FramedRecord record = protocol::recordAt(stream, position);
        if (record.state != protocol::StreamState::complete) return 0;
        offer(prototypes, stream.substr(position, record.length));
        position += record.length;
    }
}
