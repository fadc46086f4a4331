#include "HttpCaller.h"

#include <winsock2.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace {

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

std::size_t lengthIn(const std::string& head) {
    const std::string name = "content-length:";
    const std::size_t at = head.find(name);
    return at == std::string::npos ? 0 : std::stoul(head.substr(at + name.size()));
}

}  // namespace

HttpCaller::HttpCaller(unsigned int port) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<u_short>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("the server takes no connection");
    const BOOL on = TRUE;
    setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
}

HttpCaller::~HttpCaller() {
    closesocket(socket_);
}

void HttpCaller::close() const {
    shutdown(socket_, SD_BOTH);
}

bool HttpCaller::receive() {
    char bytes[16384];
    const int count = recv(socket_, bytes, sizeof bytes, 0);
    if (count <= 0) return false;
    received_.append(bytes, static_cast<std::size_t>(count));
    return true;
}

std::string HttpCaller::takeHead() {
    std::size_t end = 0;
    while ((end = received_.find("\r\n\r\n")) == std::string::npos)
        if (!receive()) throw std::runtime_error("the server has closed the connection");
    std::string head = lowered(received_.substr(0, end));
    received_.erase(0, end + 4);
    if (head.find(" 200 ") != 8) throw std::runtime_error("the server says " + head);
    return head;
}

std::string HttpCaller::post(const std::string& path, const std::string& headers,
                             const std::string& body) {
    const std::string request =
        "POST " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + headers +
        "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
        "\r\n\r\n" + body;
    send(socket_, request.data(), static_cast<int>(request.size()), 0);
    const std::size_t length = lengthIn(takeHead());
    while (received_.size() < length)
        if (!receive()) throw std::runtime_error("the server has closed the connection");
    std::string answer = received_.substr(0, length);
    received_.erase(0, length);
    return answer;
}

void HttpCaller::openEvents(const std::string& path) {
    const std::string request =
        "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nAccept: text/event-stream\r\n\r\n";
    send(socket_, request.data(), static_cast<int>(request.size()), 0);
    isChunked_ = takeHead().find("transfer-encoding: chunked") != std::string::npos;
}

bool HttpCaller::decode() {
    if (!isChunked_) {
        if (received_.empty() && !receive()) return false;
        text_ += received_;
        received_.clear();
        return true;
    }
    std::size_t end = 0;
    while ((end = received_.find("\r\n")) == std::string::npos)
        if (!receive()) return false;
    const std::size_t length = std::stoul(received_.substr(0, end), nullptr, 16);
    while (received_.size() < end + 2 + length + 2)
        if (!receive()) return false;
    text_ += received_.substr(end + 2, length);
    received_.erase(0, end + 2 + length + 2);
    return length > 0;
}

bool HttpCaller::takeLine(std::string& line) {
    std::size_t end = 0;
    while ((end = text_.find('\n')) == std::string::npos)
        if (!decode()) return false;
    line = text_.substr(0, end);
    text_.erase(0, end + 1);
    return true;
}

bool HttpCaller::nextEvent(Event& event) {
    event = {};
    for (std::string line; takeLine(line);) {
        if (line.empty() && !event.name.empty()) return true;
        if (line.rfind("event: ", 0) == 0) event.name = line.substr(7);
        if (line.rfind("data: ", 0) == 0) event.data += line.substr(6);
    }
    return false;
}
