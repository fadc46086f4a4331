#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "CallNotes.h"
#include "QorControlFacade.h"
#include "watch/Sampler.h"
#include "watch/WatchClock.h"

namespace qorctl {

/// The texts of a watch. QOR sends numbers by itself, of a text only its first character: so texts
/// are asked for, once a second.
class TextReader {
public:
    TextReader(const QorControlFacade& facade, unsigned int timeoutMs)
        : facade_(facade), timeoutMs_(timeoutMs) {}

    /// Whether the parameter is read as a text from now on, because it looks like one. `index` is
    /// its place among the names of the watch.
    bool takeIfText(std::size_t index, const wex::ParamDescription& description);

    bool isEmpty() const { return texts_.empty(); }

    /// Reads all, if it is time. What is not read is left to the next time.
    void read(Sampler& sampler, const WatchClock& clock);

private:
    struct Text {
        std::size_t index;
        std::string name;
    };

    const QorControlFacade& facade_;
    const unsigned int timeoutMs_;
    std::vector<Text> texts_;
    double nextS_ = 0;
};

}  // namespace qorctl
