#include "CodecBench.h"

#include <type_traits>

#include "protocol/Commands.h"
#include "protocol/RecordHead.h"

namespace {

constexpr int batch = 200;
constexpr std::size_t typicalTextBytes = 16;
constexpr std::size_t typicalCount = 4;

/// Fills every field with a value of believable size.
struct Fill {
    template <class T>
    void operator()(const char*, T& field) const {
        set(field);
    }

    static void set(std::uint32_t& value) { value = 0x12345678; }
    static void set(std::int32_t& value) { value = 42; }
    static void set(std::uint8_t& value) { value = 7; }
    static void set(bool& value) { value = true; }
    static void set(double& value) { value = 3.14; }
    static void set(std::string& text) { text.assign(typicalTextBytes, 'x'); }
    static void set(std::map<std::string, std::string>& entries) { entries = {{"name", "value"}}; }
    template <class T>
    static void set(std::vector<T>& items) {
        items.resize(typicalCount);
        for (T& item : items) set(item);
    }
    template <class T>
    static void set(wire::BareRun<T>& run) {
        set(run.items);
    }
    template <class Record>
    static auto set(Record& record) -> std::enable_if_t<std::is_class<Record>::value> {
        Record::fields(record, Fill());
    }
};

template <class Command>
CodecResult measureCommand(const char* name, int runs) {
    Command command;
    Fill::set(command.payload());
    CodecResult result;
    result.command = name;
    typename Command::Payload read;
    measureBatches(result.samples, runs, batch, [&] {
        std::string record;
        command.write(record);
        result.recordBytes = record.size();
        const auto head = protocol::RecordHead::read(record, 0);
        const std::string payload =
            record.substr(protocol::RecordHead::encodedBytes, head.payloadLength);
        typename Command::Payload fresh;
        wire::Reader(payload).get(fresh);
        read = std::move(fresh);
    });
    return result;
}

}  // namespace

std::vector<CodecResult> measureCodec(int runs) {
    std::vector<CodecResult> results;
#define QOR_MEASURE(id, Class, Record) results.push_back(measureCommand<Class>(#Class, runs));
    QOR_COMMANDS(QOR_MEASURE)
#undef QOR_MEASURE
    return results;
}
