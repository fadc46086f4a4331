#include "serve/rpc/Hint.h"

#include <algorithm>

#include "Spelling.h"

namespace qorctl::serve {
namespace {

constexpr std::size_t mostShown = 100;

}  // namespace

std::string beginningOf(const std::string& text) {
    if (text.size() <= mostShown) return text;
    std::size_t end = mostShown;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0u) == 0x80u) --end;
    return text.substr(0, end) + "...";
}

std::string quotedWithHint(const std::string& written, const std::vector<std::string>& names) {
    std::string quoted = "\"" + beginningOf(written) + "\"";
    if (written.size() > mostShown) return quoted;
    const auto same = std::find_if(names.begin(), names.end(), [&](const std::string& each) {
        return isSameName(each, written);
    });
    const std::string nearest = same != names.end() ? *same : nearestOf(written, names);
    return nearest.empty() ? quoted : quoted + ", perhaps \"" + nearest + "\" is meant";
}

}  // namespace qorctl::serve
