#pragma once

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "HexBytes.h"
#include "protocol/Wire.h"

namespace testing_support {

/// The fields of a record as lines "name = value", for comparisons that tell what differs.
/// Doubles appear as the image of their bits, so that NaN equals itself and -0.0 is not 0.0.
class FieldDump {
public:
    template <class T>
    void operator()(const char* name, const T& value) {
        lines.push_back(std::string(name) + " = " + text(value));
    }

    std::vector<std::string> lines;

private:
    static std::string text(std::uint32_t value) { return std::to_string(value); }
    static std::string text(std::int32_t value) { return std::to_string(value); }
    static std::string text(std::uint8_t value) { return std::to_string(value); }
    static std::string text(bool value) { return value ? "true" : "false"; }
    static std::string text(double value) {
        std::string image(sizeof value, '\0');
        std::memcpy(&image[0], &value, sizeof value);
        return "f64 " + hexOf(image);
    }
    static std::string text(const std::string& value) { return "<" + hexOf(value) + ">"; }
    static std::string text(const std::map<std::string, std::string>& entries) {
        std::string all = "{";
        for (const auto& entry : entries) all += text(entry.first) + ":" + text(entry.second) + " ";
        return all + "}";
    }
    template <class T>
    static std::string text(const std::vector<T>& items) {
        std::string all = "[";
        for (const T& item : items) all += text(item) + " ";
        return all + "]";
    }
    static std::string text(const common::Doubles& values) { return text(values.all()); }
    template <class T>
    static std::string text(const wire::BareRun<T>& run) {
        return text(run.items);
    }
    template <class Record>
    static auto text(const Record& record)
        -> std::enable_if_t<std::is_class<Record>::value, std::string> {
        FieldDump nested;
        Record::fields(record, nested);
        std::string all = "(";
        for (const std::string& line : nested.lines) all += line + "; ";
        return all + ")";
    }
};

template <class Record>
std::vector<std::string> fieldsOf(const Record& record) {
    FieldDump dump;
    Record::fields(record, dump);
    return dump.lines;
}

}  // namespace testing_support
