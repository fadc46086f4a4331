#include "serve/streams/TraceStreams.h"

#include <algorithm>
#include <utility>

#include "JsonText.h"
#include "serve/Audience.h"
#include "serve/methods/Common.h"
#include "serve/rpc/Failure.h"
#include "serve/streams/GrowingFile.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;

/// So much is read at a time, and so far a client may be behind the end before it is taken there.
constexpr std::int64_t portionBytes = std::int64_t{64} * 1024;
constexpr std::int64_t farBehindBytes = std::int64_t{4} * 1024 * 1024;
/// A longer line is told in pieces.
constexpr std::size_t longestLine = 64 * 1024;

/// Takes the whole lines out of `text`.
json takeLines(std::string& text) {
    json lines = json::array();
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        const bool hasReturn = end > begin && text[end - 1] == '\r';
        lines.push_back(utf8Of(text.substr(begin, end - begin - (hasReturn ? 1 : 0))));
    }
    text.erase(0, begin);
    if (text.size() > longestLine) lines.push_back(utf8Of(std::exchange(text, {})));
    return lines;
}

}  // namespace

Methods TraceStreams::methods() {
    return streamMethods(
        "TraceRead", "the lines of the library's trace: events \"trace\"",
        {whole("tailBytes", "So much of what was written before comes first").orElse(65536)},
        Method::Way::atOnce,
        [this](const json& given, const std::shared_ptr<Client>& client) {
            auto stream = std::make_shared<Stream>();
            stream->tailBytes = std::min<std::int64_t>(wholeOf(given["tailBytes"]), farBehindBytes);
            return streams_.add(client, std::move(stream));
        },
        [this](std::uint64_t number, const Client& client) { streams_.remove(number, client); });
}

void TraceStreams::feed() {
    const auto present = streams_.all();
    if (present.empty()) return;
    const GrowingFile file(path_);
    const std::int64_t size = file.size();
    for (const auto& each : present) {
        if (each.client->hasLeft() || each.client->outlet().isBehind()) continue;
        json lines = nextLines(file, size, *each.stream);
        if (!lines.empty())
            tell(*each.client, "trace",
                 {{"stream", each.number},
                  {"lines", std::move(lines)},
                  {"missed", each.stream->missed}});
    }
}

json TraceStreams::nextLines(const GrowingFile& file, std::int64_t size, Stream& stream) {
    if (stream.position < 0) stream.position = std::max<std::int64_t>(size - stream.tailBytes, 0);
    // The library begins its file anew when that is full.
    if (size < stream.position) stream.position = 0;
    if (size - stream.position > farBehindBytes) {
        stream.missed += size - stream.position - portionBytes;
        stream.position = size - portionBytes;
        stream.beginning.clear();
    }
    const std::string text = file.read(stream.position, portionBytes);
    stream.position += static_cast<std::int64_t>(text.size());
    stream.beginning += text;
    return takeLines(stream.beginning);
}

}  // namespace qorctl::serve
