#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <thread>

#include "Judge.h"
#include "qorcontrol/Streams.h"

namespace soak {

/// Streams of values and of trouble codes, and a thread that looks at what they bring.
class StreamReader {
public:
    StreamReader(Judge& judge, Report& report);
    ~StreamReader();
    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;

    /// Unless they have begun.
    void begin(const QorControlFacade& qor);
    /// False if the library did not answer.
    bool end();

    std::uint64_t values() const { return values_; }

private:
    void read();
    void look(const std::vector<QorControlFacade::ParamValue>& batch);
    void look(const std::vector<QorControlFacade::DtcDescription>& codes);

    Judge& judge_;
    Report& report_;
    Lock lock_;
    std::unique_ptr<qorcontrol::ValueStream> valueStream_;
    std::unique_ptr<qorcontrol::TroubleCodeStream> codeStream_;
    std::map<std::string, double> last_;
    std::atomic<std::uint64_t> values_{0};
    std::atomic<bool> ends_{false};
    std::thread thread_;
};

}  // namespace soak
