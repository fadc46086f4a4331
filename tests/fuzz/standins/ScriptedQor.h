#pragma once

#include <memory>
#include <string>

#include "Link.h"
#include "Target.h"

namespace fuzz {

/// QOR at the other end of a link, on a thread of its own: what it does, well or badly, the input
/// says, step by step, a step whenever it has its turn. When the input is at its end it is silent.
class ScriptedQor {
public:
    /// Listens under this name, from the beginning of an execution (turns::execute) on.
    ScriptedQor(std::string name, Input& input);
    ~ScriptedQor();
    ScriptedQor(const ScriptedQor&) = delete;
    ScriptedQor& operator=(const ScriptedQor&) = delete;

    /// Ends the thread with the next turn.
    void end();

private:
    void run();
    void takeRequests();
    void act();
    void sendAnswer();
    void sendAcknowledgement(std::uint32_t status);
    void sendOwnRecord();
    void send(std::string_view bytes);

    const std::string name_;
    Input& input_;
    std::shared_ptr<Link> link_;
    std::string unparsed_;
    std::string lastRequest_;  // a whole record
    bool isEnding_ = false;
    bool hasEnded_ = false;
};

/// The answer to a request as a good QOR gives it, as a record; its own kind of acknowledgement
/// where there is no data. Empty for what is no request.
std::string goodAnswerTo(const std::string& request);

/// A record of which the input says what it is: its id, the kind of its head, the bytes.
std::string recordFrom(Input& input, std::uint32_t lastRequestId);

}  // namespace fuzz
