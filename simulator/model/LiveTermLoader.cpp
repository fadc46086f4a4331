#include "model/LiveTermLoader.h"

namespace simulator {

namespace {

constexpr std::int64_t maxStepMs = 3600000;  // an hour

double positive(const JsonNode& node, const char* key) {
    const double value = node.at(key).number();
    if (!(value > 0.0)) node.at(key).fail("must be above 0");
    return value;
}

SineTerm sineTerm(const JsonNode& node) {
    node.allowOnly({"kind", "mean", "amplitude", "periodS", "phaseS"});
    SineTerm term;
    term.mean = node.number("mean", 0.0);
    term.amplitude = node.at("amplitude").number();
    term.periodS = positive(node, "periodS");
    term.phaseS = node.number("phaseS", 0.0);
    return term;
}

RampTerm rampTerm(const JsonNode& node) {
    node.allowOnly({"kind", "from", "to", "periodS", "once"});
    RampTerm term;
    term.from = node.at("from").number();
    term.to = node.at("to").number();
    term.periodS = positive(node, "periodS");
    term.once = node.boolean("once", false);
    return term;
}

NoiseTerm noiseTerm(const JsonNode& node) {
    node.allowOnly({"kind", "amplitude", "seed", "stepMs"});
    NoiseTerm term;
    term.amplitude = node.at("amplitude").number();
    term.seed = node.at("seed").word();
    term.stepMs = static_cast<std::uint32_t>(node.integer("stepMs", 100, 1, maxStepMs));
    return term;
}

FollowTerm followTerm(const JsonNode& node) {
    node.allowOnly({"kind", "source", "gain", "offset", "timeConstantS"});
    FollowTerm term;
    term.source = node.at("source").text();
    term.gain = node.number("gain", 1.0);
    term.offset = node.number("offset", 0.0);
    term.timeConstantS = positive(node, "timeConstantS");
    return term;
}

LiveTerm liveTerm(const JsonNode& node) {
    const std::string kind = node.at("kind").text();
    if (kind == "sine") return sineTerm(node);
    if (kind == "ramp") return rampTerm(node);
    if (kind == "noise") return noiseTerm(node);
    if (kind == "follow") return followTerm(node);
    node.at("kind").failUnknownChoice({"sine", "ramp", "noise", "follow"});
}

}  // namespace

std::vector<LiveTerm> liveTerms(const JsonNode& list) {
    std::vector<LiveTerm> terms;
    for (const JsonNode& item : list.items()) terms.push_back(liveTerm(item));
    if (terms.empty()) list.fail("needs at least one term");
    return terms;
}

}  // namespace simulator
