#include "watch/plot/PlotPage.h"

#include <stdexcept>

namespace qorctl {

std::string htmlOf(const std::string& text) {
    std::string html;
    for (const char character : text) {
        switch (character) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            case '\'':
                html += "&#39;";
                break;
            default:
                html += character;
        }
    }
    return html;
}

std::string scriptJson(const nlohmann::json& object) {
    std::string safe;
    for (const char character :
         object.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace)) {
        if (character == '<')
            safe += "\\u003c";
        else
            safe += character;
    }
    return safe;
}

std::string filledIn(const std::string& page, const std::map<std::string, std::string>& parts) {
    return filledIn(page, [&parts](const std::string& name) {
        const auto part = parts.find(name);
        if (part == parts.end()) throw std::invalid_argument("the page has no part " + name);
        return part->second;
    });
}

std::string filledIn(const std::string& page,
                     const std::function<std::string(const std::string& name)>& partOf) {
    std::string filled;
    std::size_t at = 0;
    for (std::size_t open = page.find("{{"); open != std::string::npos;
         open = page.find("{{", at)) {
        const std::size_t close = page.find("}}", open);
        if (close == std::string::npos)
            throw std::invalid_argument("a part of the page has no end");
        filled += page.substr(at, open - at) + partOf(page.substr(open + 2, close - open - 2));
        at = close + 2;
    }
    return filled + page.substr(at);
}

}  // namespace qorctl
