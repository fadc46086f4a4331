#include "cinterface/CodeBox.h"

#include <utility>

#include "common/Clock.h"

namespace cinterface {

void CodeBox::take(Codes codes, bool mayBelongToEarlier) {
    content_.change([&](Content& content) {
        Read& next = content.next;
        if (next.found == Found::codes) ++next.missed;
        next.found = Found::codes;
        next.codes.swap(codes);
        next.mayBelongToEarlier = mayBelongToEarlier;
        next.arrival = common::now();
    });
}

void CodeBox::noteSilence(const common::Verdict& verdict) {
    content_.change([&](Content& content) {
        if (content.next.found == Found::codes) return;
        content.next.found = Found::silence;
        content.next.silence = verdict;
    });
}

CodeBox::Read CodeBox::read(unsigned int timeoutMs) {
    Read read;
    content_.await(timeoutMs, [&](Content& content) {
        if (content.next.found == Found::nothing && !content.closed) return false;
        read = std::move(content.next);
        content.next = Read();
        content.next.missed = read.missed;
        if (content.closed) read.found = Found::closed;
        return true;
    });
    return read;
}

void CodeBox::close() {
    content_.change([](Content& content) { content.closed = true; });
}

}  // namespace cinterface
