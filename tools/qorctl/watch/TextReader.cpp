#include "watch/TextReader.h"

#include "Descriptions.h"
#include "TextKind.h"

namespace qorctl {

bool TextReader::takeIfText(std::size_t index, const wex::ParamDescription& description) {
    if (description.threeArrays || !unitOf(description).empty()) return false;
    std::vector<double> values;
    if (!facade_.getParamData(description.name, values, timeoutMs_)) return false;
    if (!looksLikeText(values, unitOf(description))) return false;
    texts_.push_back({index, description.name});
    return true;
}

void TextReader::read(Sampler& sampler, const WatchClock& clock) {
    if (clock.seconds() < nextS_) return;
    nextS_ = clock.seconds() + Sampler::textPeriodS;
    for (const Text& each : texts_) {
        std::string text;
        if (facade_.getParamDataAsString(each.name, text, timeoutMs_))
            sampler.takeText(each.index, withoutPadding(text), clock.seconds());
    }
}

}  // namespace qorctl
