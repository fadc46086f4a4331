#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/EcuModel.h"

namespace simulator {

/// Why a request was not carried out; nothing when it was.
using Refusal = std::optional<std::string>;

enum class Page { Working, Reference };

/// By which clients select them, in the order above.
inline constexpr const char* pageNames[] = {"WorkingPage", "ReferencePage"};

/// The ECU's parameters with their present values. Written values stay until the process ends; the
/// reference page keeps what the model file says and cannot be written.
class ParameterStore {
public:
    explicit ParameterStore(const std::vector<ParameterModel>& parameters);

    /// Tells the time; every reading and writing below happens at that moment.
    void advanceTo(std::uint64_t timeMs);

    const ParameterModel* find(const std::string& name) const;
    const ParameterModel* at(std::uint32_t index) const;
    std::int32_t indexOf(const ParameterModel& parameter) const;

    /// The index must be one that at() knows.
    Arrays read(std::uint32_t index) const;
    double firstValue(std::uint32_t index) const;

    Refusal writeValues(std::uint32_t index, const std::vector<double>& values);
    Refusal writeArrays(std::uint32_t index, const Arrays& arrays);
    /// A text parameter takes the characters, any other one the number that the text holds.
    Refusal writeText(std::uint32_t index, const std::string& text);
    Refusal startControl(std::uint32_t index);
    Refusal stopControl(std::uint32_t index);
    /// Direct control ends with the connection: every actuator goes back to its value at rest.
    void releaseActuators();

    void select(Page page) { page_ = page; }
    Page page() const { return page_; }

private:
    struct Lag {
        std::size_t source = 0;  // place in entries_
        double value = 0.0;
        double target = 0.0;  // when time was advanced last
    };
    struct Entry {
        const ParameterModel* model = nullptr;
        Arrays working;
        bool underControl = false;
        std::vector<Lag> lags;  // of the follow terms, one per term of the model
    };

    double timeS() const { return static_cast<double>(timeMs_) / 1000.0; }
    double target(const FollowTerm& term, std::size_t source) const;
    bool isLive(std::size_t place) const;
    void startLags();
    void advanceLags(Entry& entry, double elapsedS);
    double liveValue(const Entry& entry) const;
    Refusal refusalToWrite(const Entry& entry) const;

    std::vector<Entry> entries_;
    /// Places in entries_ of what follows something, behind all that it follows.
    std::vector<std::size_t> followers_;
    bool followsLive_ = false;  // whether any follows a measurement
    Page page_ = Page::Working;
    std::uint64_t timeMs_ = 0;
};

}  // namespace simulator
