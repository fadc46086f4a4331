#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Ledger.h"
#include "Machine.h"
#include "Network.h"
#include "protocol/Commands.h"
#include "Values.h"

namespace simtime {

/// So late at most QOR answers.
constexpr unsigned int latestAnswerMs = 4000;
/// So long at most an operator takes for a message box.
constexpr unsigned int longestBoxMs = 2500;

/// How the simulated QOR answers: so many of a hundred requests it treats so.
struct Mood {
    unsigned int late = 0;        ///< answered after up to four seconds
    unsigned int silent = 0;      ///< carried out, but without an acknowledgement or without data
    unsigned int refused = 0;     ///< not carried out
    unsigned int twice = 0;       ///< answered twice
    unsigned int disordered = 0;  ///< data before the acknowledgement
    unsigned int foreign = 0;     ///< with answers to nobody beside its own
    unsigned int cut = 0;         ///< the connection ends in the middle of the answer

    std::string describe() const;
};

/// QOR at the other end of the simulated network. It is no thread: what it does happens when bytes
/// arrive and at times that it sets itself.
class Qor {
public:
    /// How it tells data: as a reply that names its request, or by itself behind the
    /// acknowledgement.
    enum class Naming { named, unnamed, mixed };

    Qor(Naming naming, unsigned int streamPeriodMs);

    /// @name What becomes of it
    /// @{
    /// Another process: it listens, knows nothing of the one before, and has other indices.
    void start();
    /// Its process ends, and nobody listens any more.
    void end(bool isReset);
    bool runs() const { return runs_; }
    /// The connection is lost; it listens for the next one.
    void dropConnection(bool isReset);
    /// It takes nothing from its socket and sends nothing.
    void setHung(bool isHung);
    void setMood(const Mood& mood) { mood_ = mood; }
    void setEcuThere(bool isThere) { isEcuThere_ = isThere; }
    void showBox();
    /// The stream goes on that paused while nobody was at work.
    void wake();
    /// @}

    bool isEcuOnline() const { return isEcuThere_ && isConnected_; }
    bool hasLine() const { return line_ != nullptr; }

    /// Whether a request with this mark was carried out.
    bool hasHandled(std::uint64_t mark) const { return handled_.count(mark) != 0; }
    void forgetHandled() { handled_.clear(); }
    Ledger& ledger() { return ledger_; }

    unsigned int boxesShown() const { return boxesShown_; }
    unsigned int boxesAnswered() const { return boxesAnswered_; }
    std::uint64_t faults() const { return faults_; }
    std::uint64_t requests() const { return requests_; }
    unsigned int launches = 0;  ///< by the library

private:
    void accept(const std::shared_ptr<Line>& line);
    void onBytes(const std::shared_ptr<Line>& line, const std::string& bytes, std::uint64_t known);
    void take(const std::string& record);
    void handle(ExternalCommand& request);
    bool handleQuestion(ExternalCommand& request);
    void handleOrder(ExternalCommand& request);
    void describe(CommandGetParamInfo& info) const;
    void readValues(CommandDirectCtrl& request);
    void readArrays(CommandStaticParam& request);
    void readGroup(CommandReadTogether& request);
    void readCodes(CommandGetDTC& request) const;
    void noteWrite(double value);
    void noteText(const std::string& text);
    void noteControl(const CommandDirectCtrl& order);
    void connectEcu(const CommandKwpConnect& request);
    void openModel();

    void sendAnswer(ExternalCommand& data, bool hasData);
    void refuse(const ExternalCommand& request);
    void sendData(const ExternalCommand& data, bool isNamed, Ms delay, bool isSecond);
    void sendForeign();
    void later(Ms delay, const std::string& bytes, const std::function<void()>& then = {});
    Topics topicsOf(const ExternalCommand& request) const;
    void noteTaken(const ExternalCommand& request);
    void acknowledge(std::uint32_t requestId, Ms delay, std::uint32_t status);
    void sendValue(unsigned int index, ValueOrigin origin);
    void sendState(std::int32_t index, double value, Ms delay);
    void streamOnce(std::uint64_t series);
    bool chance(unsigned int percent);

    unsigned int paramOf(std::uint32_t index, const char* what);
    std::int32_t indexOf(unsigned int param) const {
        return static_cast<std::int32_t>(firstIndex_ + param);
    }

    const Naming naming_;
    const unsigned int streamPeriodMs_;
    const std::vector<std::unique_ptr<ExternalCommand>> prototypes_;
    std::shared_ptr<Line> line_;
    std::string unparsed_;
    std::uint32_t firstIndex_ = 100;
    std::vector<std::uint32_t> subscribed_;
    std::uint64_t series_ = 0;  // of the stream; another list begins another one
    std::uint64_t connects_ = 0;
    bool runs_ = false;
    bool isHung_ = false;
    bool sleeps_ = false;
    bool isEcuThere_ = true;
    bool isConnected_ = false;
    Mood mood_;
    std::set<std::uint64_t> handled_;
    Ledger ledger_;
    std::uint64_t known_ = 0;  // to the library, when it began with the request that is taken
    Ms boxEnd_ = 0;            // of the last box, at the latest
    unsigned int boxesShown_ = 0;
    unsigned int boxesAnswered_ = 0;
    std::uint64_t faults_ = 0;
    std::uint64_t requests_ = 0;
};

}  // namespace simtime
