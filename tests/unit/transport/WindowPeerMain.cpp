#include <cstdint>
#include <cstdlib>
#include <random>

#include "support/TcpBytes.h"
#include "WindowPeer.h"

// Another process of a test. It is ended from outside, except for the flood.
//   window_transport_peer answer inside|released|later TITLE CLIENT
//   window_transport_peer hang TITLE     (once it has a message, it also shows the window "TITLE
//   busy") window_transport_peer ask CLIENT     (sends one routine) window_transport_peer flood
//   CLIENT SEED COUNT
// The flood's exit code: the messages that did not have the expected result.

namespace {

using tcp::record;
using tcp::word;
using tcp::wordAt;

constexpr UINT answerMs = 200;

[[noreturn]] void pumpForEver() {
    MSG message;
    for (;;) {
        GetMessageA(&message, nullptr, 0, 0);
        DispatchMessageA(&message);
    }
}

bool sendAnswer(const std::string& client, const std::string& answer) {
    return peer::send(FindWindowA(nullptr, client.c_str()), answer, SMTO_NORMAL, answerMs) !=
           peer::notTaken;
}

/// Answers every record with itself, stamped. An answer that was not taken is sent again later.
int answer(const std::string& style, const std::string& title, const std::string& client) {
    std::string waiting;
    const peer::Window window(title, [&](const peer::Message& request) {
        const std::string echo = record(tcp::replyFlag | wordAt(request.bytes, 0),
                                        wordAt(request.bytes, 4), request.bytes.substr(12));
        if (style == "released") ReplyMessage(1);
        if (style == "later" || !sendAnswer(client, echo)) waiting = echo;
        return LRESULT{1};
    });
    for (MSG message;;) {
        MsgWaitForMultipleObjectsEx(0, nullptr, 5, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
        if (!waiting.empty() && sendAnswer(client, waiting)) waiting.clear();
    }
}

int hang(const std::string& title) {
    const peer::Window window(title, [&](const peer::Message&) {
        const peer::Window busy(title + " busy", {});
        Sleep(INFINITE);
        return LRESULT{1};
    });
    pumpForEver();
}

std::string randomBytes(std::mt19937& random) {
    std::string bytes(random() % 200, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

/// Whether one message of a random kind has the expected result.
bool floodOnce(HWND client, std::mt19937& random) {
    const std::string good = record(8, random(), word(random()));
    std::string noise = randomBytes(random);
    switch (random() % 6) {
        case 0:  // a record
            return peer::send(client, good) == 1;
        case 1:  // one with something behind it
            return peer::send(client, good + noise) == 1;
        case 2:  // one that ends too early
            return peer::send(client, good.substr(0, random() % good.size())) == 0;
        case 3:  // a command that nobody knows, with any length and content
            noise.insert(0, word(100 + random() % 1000));
            return peer::send(client, noise) == 0;
        case 4: {  // another tag
            const DWORD other = random() | 0x10000;
            return peer::sendData(client, {other, static_cast<DWORD>(good.size()),
                                           const_cast<char*>(good.data())}) == 0;
        }
        default:  // no data, whatever the length says
            return peer::sendData(client, {peer::tag, random() % 1000, nullptr}) == 0;
    }
}

int flood(HWND client, unsigned seed, unsigned count) {
    std::mt19937 random(seed);
    int wrong = 0;
    for (unsigned i = 0; i < count; ++i) wrong += floodOnce(client, random) ? 0 : 1;
    return wrong;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 2 ? argv[1] : "";
    if (mode == "answer" && argc == 5) return answer(argv[2], argv[3], argv[4]);
    if (mode == "hang") return hang(argv[2]);
    HWND const client = argc > 2 ? FindWindowA(nullptr, argv[2]) : nullptr;
    if (mode == "ask") return peer::send(client, record(8, 1, word(3)), SMTO_BLOCK, 30000);
    if (mode == "flood" && argc == 5)
        return flood(client, static_cast<unsigned>(std::atoi(argv[3])),
                     static_cast<unsigned>(std::atoi(argv[4])));
    return 1000000;
}
