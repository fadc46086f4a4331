#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "protocol/Wire.h"

namespace testing_support {

/// The field list of a record as docs/protocol.md shows it: names in wire order with their types,
/// and the initial values that are not 0, false or empty ("`stage` u32 = 7, `path` str").
class FieldList {
public:
    template <class Record>
    static std::string of(const Record& initial) {
        FieldList list;
        Record::fields(initial, list);
        return list.text_;
    }

    template <class T>
    void operator()(const char* name, const T& initial) {
        if (!text_.empty()) text_ += ", ";
        text_ += "`" + std::string(name) + "` " + typeOf(initial) + valueOf(initial);
    }

private:
    static std::string typeOf(std::uint32_t) { return "u32"; }
    static std::string typeOf(std::int32_t) { return "i32"; }
    static std::string typeOf(std::uint8_t) { return "byte"; }
    static std::string typeOf(bool) { return "bool"; }
    static std::string typeOf(double) { return "f64"; }
    static std::string typeOf(const std::string&) { return "str"; }
    static std::string typeOf(const std::map<std::string, std::string>&) { return "map"; }
    template <class T>
    static std::string typeOf(const std::vector<T>&) {
        return "seq<" + typeOf(T()) + ">";
    }
    static std::string typeOf(const common::Doubles& values) { return typeOf(values.all()); }
    template <class T>
    static std::string typeOf(const wire::BareRun<T>&) {
        return "run<" + typeOf(T()) + ">";
    }
    template <class Record>
    static auto typeOf(const Record& record)
        -> std::enable_if_t<std::is_class<Record>::value, std::string> {
        return of(record);
    }

    template <class T>
    static auto valueOf(const T& initial)
        -> std::enable_if_t<std::is_arithmetic<T>::value, std::string> {
        if (initial == T()) return "";
        return " = " + (std::is_same<T, bool>::value ? "true" : std::to_string(initial));
    }
    static std::string valueOf(const std::string& initial) { return given(initial.empty()); }
    static std::string valueOf(const std::map<std::string, std::string>& initial) {
        return given(initial.empty());
    }
    template <class T>
    static std::string valueOf(const std::vector<T>& initial) {
        return given(initial.empty());
    }
    static std::string valueOf(const common::Doubles& initial) { return given(initial.empty()); }
    template <class T>
    static std::string valueOf(const wire::BareRun<T>& initial) {
        return given(initial.items.empty());
    }
    static std::string given(bool isEmpty) { return isEmpty ? "" : " = (something)"; }

    std::string text_;
};

}  // namespace testing_support
