#include "serve/http/Gate.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <stdexcept>

#include "Spelling.h"

namespace qorctl::serve::http {
namespace {

constexpr std::size_t shortestToken = 16;
constexpr std::size_t longestToken = 1024;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// "127.0.0.1", "[::1]": no name, so nobody can make it mean another machine.
bool isAddress(const std::string& host) {
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') return true;
    return std::count(host.begin(), host.end(), '.') == 3 &&
           std::all_of(host.begin(), host.end(),
                       [](char each) { return isDigit(each) || each == '.'; });
}

std::string withoutPort(const std::string& host) {
    const std::size_t colon = host.rfind(':');
    const bool isPort =
        colon != std::string::npos &&
        std::all_of(host.begin() + static_cast<std::ptrdiff_t>(colon) + 1, host.end(), isDigit);
    return isPort ? host.substr(0, colon) : host;
}

}  // namespace

std::optional<Gate::Refusal> Gate::refusalOf(const Visit& visit) const {
    if (visit.method != "GET" && visit.method != "HEAD" && visit.method != "POST")
        return Refusal{405, "only GET, HEAD and POST are known here"};
    if (!isOwnHost(withoutPort(visit.host)))
        return Refusal{403, "this server does not go by that host name; see --allow-host"};
    if (!visit.origin.empty() && !isSameName(visit.origin, "http://" + visit.host))
        return Refusal{403, "pages of other servers may not use this one"};
    // The page has nothing to hide, and asks for the token. Others may lead to it.
    const bool isPage = visit.path == "/" && visit.method != "POST";
    const bool isOfOwnPage =
        visit.fetchSite.empty() || visit.fetchSite == "same-origin" || visit.fetchSite == "none";
    if (!isPage && !isOfOwnPage) return Refusal{403, "pages of other servers may not use this one"};
    if (!isPage && !hasToken(visit.authorization))
        return Refusal{401, "the token is missing or wrong: send Authorization: Bearer TOKEN"};
    if (visit.method == "POST" &&
        !isSameName(visit.contentType.substr(0, visit.contentType.find_first_of("; ")),
                    "application/json"))
        return Refusal{415, "send Content-Type: application/json"};
    return std::nullopt;
}

bool Gate::isOwnHost(const std::string& host) const {
    return isAddress(host) || isSameName(host, "localhost") ||
           std::any_of(rules_.ownNames.begin(), rules_.ownNames.end(),
                       [&](const std::string& each) { return isSameName(host, each); });
}

bool Gate::hasToken(const std::string& authorization) const {
    return rules_.token.empty() || isSameSecret(authorization, "Bearer " + rules_.token);
}

bool isSameSecret(const std::string& left, const std::string& right) {
    if (right.empty()) return left.empty();
    // The time depends on what was sent alone.
    unsigned int difference = left.size() == right.size() ? 0 : 1;
    for (std::size_t i = 0; i < left.size(); ++i)
        difference |=
            static_cast<unsigned char>(left[i]) ^
            static_cast<unsigned int>(static_cast<unsigned char>(right[i % right.size()]));
    return difference == 0;
}

std::string tokenIn(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("the token file " + path + " cannot be read");
    std::string token(longestToken + 1, '\0');
    file.read(token.data(), static_cast<std::streamsize>(token.size()));
    token.resize(static_cast<std::size_t>(file.gcount()));
    token.resize(std::min(token.find_first_of("\r\n"), token.size()));
    const bool isVisible = std::all_of(token.begin(), token.end(), [](char each) {
        return std::isgraph(static_cast<unsigned char>(each)) != 0;
    });
    if (token.size() < shortestToken || token.size() > longestToken || !isVisible)
        throw std::runtime_error("the first line of the token file " + path +
                                 " must be 16 to 1024 visible ASCII characters without blanks");
    return token;
}

}  // namespace qorctl::serve::http
