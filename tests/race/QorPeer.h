#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "protocol/Commands.h"
#include "QorEnd.h"

/// QOR at the other end of a transport, on a thread of its own: acknowledges and answers
/// everything, sends the subscribed values without pause and now and then a question for the
/// operator. All numbers of one answer are the same, and each answer has another: a host that sees
/// two different ones in a record has got pieces of two answers.
class QorPeer {
public:
    explicit QorPeer(std::unique_ptr<QorEnd> end);
    /// At the end of a link: it listens under this name, at once.
    explicit QorPeer(std::string name);
    ~QorPeer();
    QorPeer(const QorPeer&) = delete;
    QorPeer& operator=(const QorPeer&) = delete;

    /// Breaks the connection; the library makes a new one.
    void hangUp() { hangUp_ = true; }

    /// While it holds them back, no connect ends.
    void holdResults(bool hold) { holdsResults_ = hold; }

    bool isConnected() const { return connected_; }
    int connections() const { return connections_; }
    int questionsAnswered() const { return questionsAnswered_; }

private:
    void run();
    void talk();
    void takeRecords();
    void take(const std::string& record);
    void answer(ExternalCommand& request);
    template <class Command, class Fill>
    bool answerIf(ExternalCommand& request, Fill fill);
    void connectEcu(const CommandKwpConnect& request);
    void stream();

    void sendValue(std::int32_t index, double value);
    void reply(ExternalCommand& answer, std::uint32_t requestId);
    void send(const IExternalCommand& command);

    const std::unique_ptr<QorEnd> end_;
    const std::vector<std::unique_ptr<ExternalCommand>> prototypes_;
    std::string unparsed_;
    std::vector<std::uint32_t> subscribed_;
    bool connecting_ = false;  // from the first connect on
    double number_ = 0;
    int rounds_ = 0;
    std::atomic<bool> hangUp_{false};
    std::atomic<bool> holdsResults_{false};
    std::atomic<bool> connected_{false};
    std::atomic<int> connections_{0};
    std::atomic<int> questionsAnswered_{0};
    std::atomic<bool> ending_{false};
    std::thread thread_;  // the last member: it uses all others
};
