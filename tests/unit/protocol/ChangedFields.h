#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "protocol/Wire.h"

namespace testing_support {

/// Gives every field of a record a value other than its initial one. No two values are alike, so
/// that a field read from another's place shows.
class ChangeFields {
public:
    template <class T>
    void operator()(const char*, T& field) {
        change(field);
    }

private:
    std::uint32_t next() { return ++count_; }

    void change(std::uint32_t& value) { value ^= 0x01020000u + next(); }
    void change(std::int32_t& value) { value = static_cast<std::int32_t>(0x7F000000u + next()); }
    void change(std::uint8_t& value) { value = static_cast<std::uint8_t>(value ^ next()); }
    void change(bool& value) { value = !value; }
    void change(double& value) { value += 0.5 + next(); }
    void change(std::string& text) { text += "text " + std::to_string(next()); }
    void change(std::map<std::string, std::string>& entries) {
        for (int i = 0; i < 2; ++i) {
            std::string key;
            change(key);
            change(entries[key]);
        }
    }
    template <class T>
    void change(std::vector<T>& items) {
        items.resize(items.size() + 2);
        for (T& item : items) change(item);
    }
    void change(common::Doubles& values) {
        std::vector<double> changed = values.all();
        change(changed);
        values = changed;
    }
    template <class T>
    void change(wire::BareRun<T>& run) {
        change(run.items);
    }
    template <class Record>
    auto change(Record& record) -> std::enable_if_t<std::is_class<Record>::value> {
        Record::fields(record, *this);
    }

    std::uint32_t count_ = 0;
};

template <class Record>
Record changed(Record record) {
    ChangeFields visitor;
    Record::fields(record, visitor);
    return record;
}

}  // namespace testing_support
