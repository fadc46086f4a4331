#include "demo/Tour.h"

namespace qorctl {

Tour::Tour(Conversation& conversation)
    : conversation_(conversation),
      session_(conversation.session()),
      facade_(session_.facade()),
      timeoutMs_(session_.options().timeoutMs),
      descriptions_(facade_),
      results_(conversation.results()) {}

void Tour::run() {
    const auto step = [this](const char* title, const StepReport::Step& work) {
        conversation_.step(title, work);
    };
    step("describe parameters", [this] { return describe(); });
    step("read scalars", [this] { return readScalars(); });
    step("read a curve", [this] { return readArrays("IdleSpeedOverTemperature"); });
    step("read a map", [this] { return readArrays("IgnitionMap"); });
    step("read texts", [this] { return readTexts(); });
    step("watch live measurements", [this] { return watchLive(); });
    step("write, read back, restore", [this] { return writeAndRestore(); });
    step("measure the value cache", [this] { return measureCache(); });
}

bool Tour::read(const std::string& name, std::vector<double>& values, CallNotes& calls) {
    return calls.note(facade_.getParamData(name, values, timeoutMs_) && !values.empty(), name);
}

void Tour::show(const TextTable& table) {
    Console& console = conversation_.console();
    console.line("");
    for (const std::string& line : table.lines()) console.line("    " + line);
    console.line("");
}

}  // namespace qorctl
