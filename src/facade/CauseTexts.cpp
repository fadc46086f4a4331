#include "facade/CauseTexts.h"

#include <cstddef>

using qorcontrol::Cause;

namespace causetexts {
namespace {

constexpr Texts table[] = {
    {Cause::none, "", ""},
    {Cause::agentEnded, "The library's agent has ended, no operation works any more",
     "Look for the reason in the trace; check that QOR's settings file can be read and names QOR's "
     "executable, and that QOR starts by itself: \"qorctl doctor\" looks at all that. Then make a "
     "new object."},
    {Cause::agentBusy, "The library's agent was at other requests for the whole time",
     "Give more time, or ask less at once: requests are carried out one after the other. See "
     "whether a connect, the opening of a model or a message box of QOR's is under way."},
    {Cause::pushedOut, "Later requests pushed this one out of the full queue",
     "No more than ten requests can wait: let fewer threads ask at once, or wait for answers."},
    {Cause::noConnection, "There is no connection to QOR",
     "See whether QOR runs, and whether the address and port, or the window titles, in the "
     "settings file are the ones that QOR uses; a firewall may be in the way. \"qorctl doctor\" "
     "looks at all that."},
    {Cause::qorSilent, "QOR did not take the request in time",
     "See whether QOR hangs, shows a dialog or is busy for longer; give more time."},
    {Cause::noData, "QOR took the request, but its data did not come in time",
     "Give more time; see whether the ECU is online and answers in QOR itself."},
    {Cause::refused, "QOR refused the request",
     "See in QOR whether the ECU is online and the operation is allowed in its present state, and "
     "what QOR itself reports."},
    {Cause::unknownName, "QOR knows no parameter of that name",
     "Compare the spelling, with upper and lower case, with the model that is open in QOR; see "
     "whether it is the right model."},
    {Cause::kwpBeforeConnect, "KWP needs a connect before it",
     "Connect the ECU first; the opening of a model ends the connection."},
    {Cause::cancelled, "The host cancelled", "Nothing, if that was meant."},
    {Cause::connectReported, "QOR reported that the connect failed",
     "See what QOR itself reports; check ignition, cable and interface, the connect settings and, "
     "for security access, the path of the security library."},
    {Cause::ecuOffline, "QOR connected, but the ECU did not come online in time",
     "Check ignition, cable and interface; see in QOR whether the ECU comes online later."},
    {Cause::resultTooLarge, "The result does not fit into what the caller offers",
     "Offer as much room as was asked for, and ask for the result again."},
    {Cause::badArgument, "An argument is one that no request can be made of",
     "Look for null pointers, numbers out of range, and texts with characters that the system's "
     "code page does not have."},
    {Cause::outOfMemory, "There is too little memory",
     "A program of 32 bits has 2 GiB: read and write less at once, and look for leaks."},
    {Cause::requestTooLarge, "The request does not fit into one record of 128 MiB",
     "Pass fewer values or shorter texts."},
    {Cause::qorChanged, "QOR became another one, or opened another model, meanwhile",
     "Ask again; see whether QOR was restarted or the connection to it was lost."},
    {Cause::badAnswer, "What QOR answered is not what was asked for",
     "See whether this version of QOR fits the library; the trace may tell more."},
    {Cause::systemFailure, "The system refused something that the library needs",
     "See whether the process or the machine has run out of handles, threads or memory."},
    {Cause::badHandle, "The handle is closed, or never was one",
     "See that it comes from a call that succeeded and has not been closed since."},
    {Cause::notReady, "There is nothing there yet", "Ask again later."},
    {Cause::wrongOrder, "That is not possible now",
     "Something else must come first, or must end first: see the description of the function."},
};

/// The table stands in the order of the numbers.
constexpr bool isInOrder() {
    int next = 0;
    for (const Texts& row : table)
        if (static_cast<int>(row.cause) != next++) return false;
    return true;
}
static_assert(isInOrder() &&
                  sizeof table / sizeof table[0] == static_cast<std::size_t>(Cause::wrongOrder) + 1,
              "a row per cause");

}  // namespace

const Texts& of(Cause cause) noexcept {
    const auto number = static_cast<std::size_t>(cause);
    return number < sizeof table / sizeof table[0] ? table[number] : table[0];
}

std::string sentence(Cause cause, const char* detail) {
    std::string text = of(cause).sentence;
    if (text.empty()) return text;
    if (*detail != '\0') text += std::string(": ") + detail;
    for (char& character : text)
        if (character == '\n' || character == '\r') character = ' ';
    while (text.back() == '.' || text.back() == ' ') text.pop_back();
    return text + '.';
}

}  // namespace causetexts
