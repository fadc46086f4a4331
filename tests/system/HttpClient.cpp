#include "HttpClient.h"

#include <winsock2.h>

#include <algorithm>
#include <cctype>
#include <sstream>
#include <stdexcept>

#include "Waiting.h"

namespace {

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

HttpAnswer headOf(const std::string& text) {
    HttpAnswer answer;
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    if (line.rfind("HTTP/1.1 ", 0) == 0) answer.status = std::stoi(line.substr(9));
    while (std::getline(lines, line)) {
        const std::size_t colon = line.find(": ");
        if (colon == std::string::npos) continue;
        while (!line.empty() && line.back() == '\r') line.pop_back();
        answer.headers[lowered(line.substr(0, colon))] = line.substr(colon + 2);
    }
    return answer;
}

}  // namespace

HttpClient::HttpClient(unsigned short port) {
    static WSADATA data;
    static const int started = WSAStartup(MAKEWORD(2, 2), &data);
    socket_ = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (started != 0 ||
        ::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        closesocket(socket_);
        throw std::runtime_error("the server takes no connection");
    }
}

HttpClient::~HttpClient() {
    closesocket(socket_);
}

bool HttpClient::send(const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const int count =
            ::send(socket_, bytes.data() + sent, static_cast<int>(bytes.size() - sent), 0);
        if (count <= 0) return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

std::string HttpClient::readSome(unsigned timeoutMs) {
    if (!received_.empty()) {
        std::string some;
        some.swap(received_);
        return some;
    }
    fd_set sockets;
    FD_ZERO(&sockets);
    sockets.fd_array[sockets.fd_count++] = socket_;
    timeval time = {static_cast<long>(timeoutMs / 1000),
                    static_cast<long>(timeoutMs % 1000 * 1000)};
    if (select(0, &sockets, nullptr, nullptr, &time) != 1) return {};
    std::string some(65536, '\0');
    const int count = recv(socket_, some.data(), static_cast<int>(some.size()), 0);
    isEnded_ = count <= 0;
    some.resize(static_cast<std::size_t>(std::max(count, 0)));
    return some;
}

HttpAnswer HttpClient::readAnswer(unsigned timeoutMs) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    std::string text;
    const auto readUntil = [&](const auto& isWhole) {
        while (!isWhole() && !isEnded_ && GetTickCount64() < end) text += readSome(100);
        return isWhole();
    };
    std::size_t head = 0;
    if (!readUntil([&] { return (head = text.find("\r\n\r\n")) != std::string::npos; })) return {};
    HttpAnswer answer = headOf(text.substr(0, head));
    text.erase(0, head + 4);
    const auto length = answer.headers.find("content-length");
    const std::size_t bytes = length == answer.headers.end() ? 0 : std::stoul(length->second);
    readUntil([&] { return text.size() >= bytes; });
    answer.body = text.substr(0, bytes);
    received_ = text.substr(std::min(bytes, text.size()));
    return answer;
}

bool HttpClient::isClosedWithin(unsigned timeoutMs) {
    return eventually(timeoutMs, [this] {
        readSome(10);
        return isEnded_;
    });
}

void HttpClient::reset() {
    const linger hard = {1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&hard), sizeof hard);
    closesocket(socket_);
    socket_ = INVALID_SOCKET;
}

void HttpClient::endSending() {
    shutdown(socket_, SD_SEND);
}

void HttpClient::takeLittle() {
    const int bytes = 65536;
    setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&bytes), sizeof bytes);
}

std::string httpRequest(const std::string& method, const std::string& path,
                        const std::string& headers, const std::string& body) {
    const bool hasHost = headers.find("Host:") != std::string::npos;
    std::string text =
        method + " " + path + " HTTP/1.1\r\n" + (hasHost ? "" : "Host: 127.0.0.1\r\n") + headers;
    if (method == "POST" || !body.empty())
        text += (headers.find("Content-Type:") == std::string::npos
                     ? "Content-Type: application/json\r\n"
                     : "") +
                std::string("Content-Length: ") + std::to_string(body.size()) + "\r\n";
    return text + "\r\n" + body;
}

HttpAnswer httpExchange(unsigned short port, const std::string& bytes, unsigned timeoutMs) {
    HttpClient client(port);
    client.send(bytes);
    return client.readAnswer(timeoutMs);
}
