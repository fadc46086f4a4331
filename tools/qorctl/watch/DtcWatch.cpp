#include "watch/DtcWatch.h"

#include <fmt/format.h>

#include <algorithm>

#include "Interrupt.h"
#include "JsonText.h"
#include "qorcontrol/LentQueue.h"
#include "TroubleCodes.h"
#include "watch/SampleText.h"
#include "watch/SampleView.h"
#include "watch/WatchClock.h"

namespace qorctl {
namespace {

using Code = QorControlFacade::DtcDescription;

constexpr unsigned int popMs = 20;
constexpr unsigned int slots = 64;

bool isSame(const Code& one, const Code& other) {
    return one.code == other.code && one.status == other.status && one.text1 == other.text1 &&
           one.text2 == other.text2 && one.text3 == other.text3 && one.text4 == other.text4;
}

bool isMarker(const CodeList& list) {
    return list.size() == 1 && isSame(list.front(), Code{});
}

}  // namespace

DtcNews::Kind DtcNews::take(const CodeList& list) {
    if (isMarker(list)) {
        ++failures_;
        return last_ = Kind::failure;
    }
    ++lists_;
    const bool isNew = last_ != Kind::codes ||
                       !std::equal(list.begin(), list.end(), codes_.begin(), codes_.end(), isSame);
    codes_ = list;
    last_ = Kind::codes;
    return isNew ? Kind::codes : Kind::none;
}

void DtcWatch::run() {
    conversation_.step("watch trouble codes", [this] { return stream(); });
    nlohmann::json& results = conversation_.results();
    results["lists"] = news_.lists();
    results["failures"] = news_.failures();
    results["codes"] = jsonOf(news_.codes());
}

Outcome DtcWatch::stream() {
    qorcontrol::LentQueue<CodeList> queue(slots);
    Session& session = conversation_.session();
    QorControlFacade& facade = session.facade();
    CallNotes calls;
    if (!calls.note(
            facade.startDtcRead(queue.get(), session.options().timeoutMs, options_.periodMs)))
        return calls.failure("the library's agent has ended");
    const WatchClock clock(options_.forS);
    while (!clock.isOver() && !interrupt::isRequested() && canPrint() && session.mayGoOn()) {
        CodeList list;
        if (queue.get()->pop(list, popMs)) show(news_.take(list), clock.seconds());
        conversation_.console().transient(fmt::format("{:.1f} s, {} codes, read {} times",
                                                      clock.seconds(), news_.codes().size(),
                                                      news_.lists()));
    }
    conversation_.console().eraseTransient();
    facade.stopDtcRead();
    const bool stopIsSeen = calls.note(facade.pingQor(session.options().timeoutMs));
    if (stopIsSeen) queue.takeBack();
    return judge(stopIsSeen, calls, clock.seconds());
}

void DtcWatch::show(DtcNews::Kind kind, double nowS) const {
    if (kind == DtcNews::Kind::none) return;
    conversation_.console().eraseTransient();
    const bool failed = kind == DtcNews::Kind::failure;
    if (options_.json) {
        nlohmann::json line = {{"t", std::stod(textOfTime(nowS))}};
        if (failed)
            line["failed"] = true;
        else
            line["codes"] = jsonOf(news_.codes());
        printLine(printedOnOneLine(line));
        return;
    }
    if (failed) {
        printLine(textOfTime(nowS) + " the trouble codes could not be read, four times in a row");
        return;
    }
    printLine(fmt::format("{} {} trouble codes", textOfTime(nowS), news_.codes().size()));
    if (news_.codes().empty()) return;
    for (const std::string& line : tableOf(news_.codes()).lines()) printLine("    " + line);
}

Outcome DtcWatch::judge(bool stopIsSeen, const CallNotes& calls, double elapsedS) {
    const std::string text = fmt::format("{:.1f} s, read {} times", elapsedS, news_.lists());
    if (!canPrint()) return Outcome::failure(text + ", then nobody read the output any more");
    Session& session = conversation_.session();
    if (!session.options().keepsGoing && !session.contact().look())
        return lossBehind(session.contact(), text);
    if (news_.lists() == 0 && !interrupt::isRequested())
        return calls.failure(fmt::format("no list came in {:.1f} s", elapsedS));
    if (session.contact().lost() != Contact::Lost::nothing) return Outcome::success(text);
    if (!stopIsSeen) return calls.failure(text + ", then QOR did not answer any more");
    if (news_.isFailing()) return Outcome::failure(text + ", but not any more at the end");
    return Outcome::success(text);
}

}  // namespace qorctl
