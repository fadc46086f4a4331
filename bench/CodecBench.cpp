#include "CodecBench.h"

#include <cstring>
#include <stdexcept>
#include <type_traits>

#include "CodecRound.h"
#include "protocol/Commands.h"

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
    static void set(common::Doubles& values) { values = std::vector<double>(typicalCount, 3.14); }
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
    measureBatches(result.samples, runs, batch,
                   [&] { result.recordBytes = writeAndRead(command, read); });
    return result;
}

using Doubles = std::vector<double>;

/// Into memory that is there, and so are the others.
double copyOf(const std::string& bytes, std::string& copy) {
    std::memcpy(&copy[0], bytes.data(), bytes.size());
    return copy.back();
}

}  // namespace

ArrayResult measureArrays(int runs) {
    ArrayResult result;
    Doubles values(arrayLength);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i) / 7;
    std::string bytes, copy(values.size() * sizeof(double), 'x');
    bytes.reserve(copy.size() + 4);
    const std::string source = copy;
    Doubles read;
    for (int run = 0; run < runs; ++run) {
        measureBatches(result.copy, 1, 1, [&] { copyOf(source, copy); });
        bytes.clear();
        measureBatches(result.write, 1, 1, [&] { wire::Writer(bytes).put(values); });
        measureBatches(result.read, 1, 1, [&] { wire::Reader(bytes).get(read); });
    }
    if (read != values) throw std::logic_error("what was written is not what is read");
    return result;
}

std::vector<CodecResult> measureCodec(int runs) {
    std::vector<CodecResult> results;
#define QOR_MEASURE(id, Class, Record) results.push_back(measureCommand<Class>(#Class, runs));
    QOR_COMMANDS(QOR_MEASURE)
#undef QOR_MEASURE
    return results;
}
