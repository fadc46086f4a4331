#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qorctl::serve::http {

/// Who may use the server over HTTP. Programs of this machine may, and with the token others; a
/// page of somebody else's in a browser of this machine may not, whatever name it goes by.
class Gate {
public:
    struct Rules {
        std::string token;                  ///< empty: none is asked for
        std::vector<std::string> ownNames;  ///< of this machine, beside localhost and addresses
    };
    /// What a request says of itself.
    struct Visit {
        std::string method;
        std::string path;
        std::string host;            ///< header "Host"
        std::string origin;          ///< header "Origin"; empty: none
        std::string authorization;   ///< header "Authorization"
        std::string contentType;     ///< header "Content-Type"
        std::string fetchSite = {};  ///< header "Sec-Fetch-Site", of browsers
    };
    struct Refusal {
        int status;
        std::string reason;
    };

    explicit Gate(Rules rules) : rules_(std::move(rules)) {}

    std::optional<Refusal> refusalOf(const Visit& visit) const;

private:
    bool isOwnHost(const std::string& host) const;
    bool hasToken(const std::string& authorization) const;

    const Rules rules_;
};

/// Whether two texts are the same, in a time that does not tell how much of them is.
bool isSameSecret(const std::string& left, const std::string& right);

/// The token in a file: its first line, of at least 16 visible ASCII characters. Throws
/// std::runtime_error, telling the file, if it has none.
std::string tokenIn(const std::string& path);

}  // namespace qorctl::serve::http
