#include "StreamReader.h"

#include "Stamps.h"

namespace soak {

namespace {

constexpr unsigned slots = 50;
constexpr unsigned popMs = 10;
constexpr unsigned endMs = 2000;
constexpr unsigned codesPeriodMs = 300;
constexpr unsigned codesTimeoutMs = 100;
constexpr const char* where = "stream";

std::vector<std::string> names() {
    std::vector<std::string> all;
    for (unsigned i = 0; i < flows.count; ++i) all.push_back(numbered(flows.stem, i));
    return all;
}

unsigned numberOf(const std::string& name) {
    for (unsigned i = 0; i < flows.count; ++i)
        if (name == numbered(flows.stem, i)) return flows.firstStamp + i;
    return 0;
}

}  // namespace

StreamReader::StreamReader(Judge& judge, Report& report)
    : judge_(judge), report_(report), thread_([this] { read(); }) {}

StreamReader::~StreamReader() {
    ends_ = true;
    thread_.join();
}

void StreamReader::begin(const QorControlFacade& qor) {
    const Inside inside(lock_);
    if (valueStream_ != nullptr) return;
    valueStream_ = std::make_unique<qorcontrol::ValueStream>(qor, names(), slots);
    codeStream_ =
        std::make_unique<qorcontrol::TroubleCodeStream>(qor, codesTimeoutMs, codesPeriodMs, slots);
}

bool StreamReader::end() {
    const Inside inside(lock_);
    if (valueStream_ == nullptr) return true;
    if (!valueStream_->end(endMs) || !codeStream_->end(endMs)) return false;
    valueStream_.reset();
    codeStream_.reset();
    return true;
}

void StreamReader::read() {
    std::vector<QorControlFacade::ParamValue> batch;
    std::vector<QorControlFacade::DtcDescription> codes;
    while (!ends_) {
        bool isThere = false;
        {
            const Inside inside(lock_);
            isThere = valueStream_ != nullptr;
            if (isThere && valueStream_->pop(batch, popMs)) look(batch);
            if (isThere && codeStream_->pop(codes, 0)) look(codes);
        }
        Sleep(isThere ? 1 : popMs);  // who wants to end them comes in here
    }
}

// What is fresh is repeated, so a value may come again but none from before it.
void StreamReader::look(const std::vector<QorControlFacade::ParamValue>& batch) {
    for (const auto& value : batch) {
        ++values_;
        const unsigned number = numberOf(value.name);
        judge_.expect(number != 0 && value.values.size() == 1, where, "not what was asked for");
        if (value.values.size() != 1) continue;
        const double stamp = value.values[0];
        judge_.expect(
            Stamp::in(stamp).number == number, where,
            value.name + " brought a value of number " + std::to_string(Stamp::in(stamp).number));
        double& last = last_[value.name];
        judge_.expect(stamp >= last, where, value.name + " went back in time");
        last = stamp;
    }
}

void StreamReader::look(const std::vector<QorControlFacade::DtcDescription>& codes) {
    for (const auto& code : codes)
        judge_.expect(code.text1.empty() || code.text1.compare(0, 4, "Code") == 0, where,
                      "a wrong trouble code: " + code.text1);
}

}  // namespace soak
