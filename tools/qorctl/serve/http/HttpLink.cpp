#include "serve/http/HttpLink.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "JsonText.h"
#include "qorcontrol/LibraryVersion.h"
#include "serve/http/EventOutlet.h"
#include "serve/http/Listener.h"
#include "serve/http/Members.h"
#include "serve/http/Workers.h"
#include "serve/OpenRpc.h"
#include "serve/panel/Panel.h"

namespace qorctl::serve::http {
namespace {

using httplib::DataSink;
using httplib::Request;
using httplib::Response;
using nlohmann::json;

constexpr std::size_t mostConnections = 256;
constexpr std::size_t mostMembers = 64;
constexpr unsigned int lookMs = 20;
constexpr std::chrono::milliseconds glance(200);
const char* const jsonType = "application/json";
/// The page loads nothing, and nobody puts it into a page of theirs.
const char* const policy =
    "default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; "
    "connect-src 'self'; img-src data: blob:; base-uri 'none'; form-action 'none'; "
    "frame-ancestors 'none'";

void refuse(Response& response, int status, const std::string& reason) {
    response.status = status;
    response.set_content(printedOnOneLine({{"error", reason}}), jsonType);
    if (status == 401) response.set_header("WWW-Authenticate", "Bearer");
    Listener::endConnection(response);
}

/// What memory the body may take: of one in chunks it is not told before.
std::size_t bodyBytesOf(const Request& request) {
    if (request.has_header("Transfer-Encoding")) return Connection::mostBodyBytes;
    return static_cast<std::size_t>(request.get_header_value<std::uint64_t>("Content-Length"));
}

/// The answer to one message, which the thread of its connection waits for.
class Answer {
public:
    void set(const json& whole) {
        std::string text;
        try {
            if (!whole.is_null()) text = printedOnOneLine(whole);
        } catch (const std::bad_alloc&) {
            text = noMemory;  // so short that it needs none
        }
        const std::lock_guard<std::mutex> guard(mutex_);
        text_ = std::move(text);
        changed_.notify_all();
    }

    bool isThere(std::chrono::milliseconds within) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, within, [this] { return text_.has_value(); });
    }

    /// Once it is there. Empty: nothing is to be said.
    std::string take() {
        const std::lock_guard<std::mutex> guard(mutex_);
        return std::move(*text_);
    }

    static constexpr const char* noMemory = "no memory";

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<std::string> text_;  // guarded by mutex_
};

/// The stay of a client whose events are open.
class Stay {
public:
    Stay(Server& server, Members& members)
        : server_(server), members_(members), name_(members.newName()) {
        outlet_->tell("hello", printedOnOneLine({{"client", name_},
                                                 {"version", qorcontrol::versionText()},
                                                 {"readOnly", server.options().isReadOnly}}));
        client_ = server.join(Client::Kind::lasting, outlet_);
        isMember_ = members.add(name_, client_);
    }
    ~Stay() {
        members_.remove(name_);
        server_.leave(client_);
        server_.metrics().httpAnswered(200);
    }
    Stay(const Stay&) = delete;
    Stay& operator=(const Stay&) = delete;

    bool isMember() const { return isMember_; }

    /// The next events, or a sign of life; false: it is over.
    bool passOn(DataSink& sink) {
        std::string text;
        for (unsigned int looks = 0; text.empty() && looks < looksPerSign; ++looks) {
            text = outlet_->next(lookMs);
            if (text.empty() && (server_.isEnding() || !sink.is_writable())) return false;
        }
        const bool isSent =
            text.empty() ? sink.write(sign, 3) : sink.write(text.data(), text.size());
        outlet_->noteSent();
        return isSent;
    }

private:
    static constexpr unsigned int lookMs = 200;
    static constexpr unsigned int looksPerSign = 5;
    static constexpr const char* sign = ":\n\n";

    Server& server_;
    Members& members_;
    const std::string name_;
    const std::shared_ptr<EventOutlet> outlet_ = std::make_shared<EventOutlet>();
    std::shared_ptr<Client> client_;
    bool isMember_ = false;
};

}  // namespace

/// What the server answers, and the library's server that asks it.
class HttpLink::Routes {
public:
    explicit Routes(const Gate& gate) : gate_(gate) {}

    void set(Server& server);

    const std::shared_ptr<Workers::Threads> threads =
        std::make_shared<Workers::Threads>(mostConnections);
    Listener listener;

private:
    httplib::Server::HandlerResponse admit(const Request& request, Response& response);
    void answerRpc(Server& server, const Request& request, Response& response);
    void openEvents(Server& server, Response& response);

    const Gate& gate_;
    Members members_{mostMembers};
};

void HttpLink::Routes::set(Server& server) {
    listener.set_pre_routing_handler(
        [this](const Request& request, Response& response) { return admit(request, response); });
    listener.set_error_handler([](const Request&, Response& response) {
        const int status = response.status;
        if (response.body.empty())
            refuse(response, status, httplib::detail::status_message(status));
    });
    listener.set_logger([&server](const Request&, const Response& response) {
        server.metrics().httpAnswered(response.status);
    });
    listener.Get("/", [](const Request&, Response& response) {
        response.set_header("Content-Security-Policy", policy);
        response.set_content(panelPage(), "text/html; charset=utf-8");
    });
    listener.Get("/openrpc.json", [&server](const Request&, Response& response) {
        response.set_content(printed(openRpcOf(server.methods())), jsonType);
    });
    listener.Get("/metrics", [&server](const Request&, Response& response) {
        response.set_content(server.metrics().prometheusText(server.gauges()),
                             "text/plain; version=0.0.4; charset=utf-8");
    });
    listener.Get("/events", [this, &server](const Request&, Response& response) {
        openEvents(server, response);
    });
    listener.Post("/rpc", [this, &server](const Request& request, Response& response) {
        answerRpc(server, request, response);
    });
}

httplib::Server::HandlerResponse HttpLink::Routes::admit(const Request& request,
                                                         Response& response) {
    using Outcome = httplib::Server::HandlerResponse;
    const auto header = [&](const char* name) { return request.get_header_value(name); };
    const auto refusal = gate_.refusalOf({request.method, request.path, header("Host"),
                                          header("Origin"), header("Authorization"),
                                          header("Content-Type"), header("Sec-Fetch-Site")});
    if (refusal) {
        refuse(response, refusal->status, refusal->reason);
        return Outcome::Handled;
    }
    if (request.method != "GET" && !request.has_header("Content-Length") &&
        !request.has_header("Transfer-Encoding")) {
        refuse(response, 411, "send Content-Length");
        return Outcome::Handled;
    }
    // The library would first read it, and leave it out.
    if (request.get_header_value<std::uint64_t>("Content-Length") > Connection::mostBodyBytes) {
        refuse(response, 413, "the body of a request has at most 8 MiB");
        return Outcome::Handled;
    }
    if (request.method == "POST" && !listener.reserve(bodyBytesOf(request))) {
        refuse(response, 503, "too many long requests come at once");
        return Outcome::Handled;
    }
    return Outcome::Unhandled;
}

void HttpLink::Routes::answerRpc(Server& server, const Request& request, Response& response) {
    const std::string name = request.get_header_value("X-Qor-Client");
    const auto client = name.empty() ? server.passing() : members_.find(name);
    if (!client)
        return refuse(response, 404, "there is no client of that X-Qor-Client, or it has left");
    const auto answer = std::make_shared<Answer>();
    server.receive(client, request.body, [answer](const json& whole) { answer->set(whole); });
    while (!answer->isThere(glance))
        if (!client->isLasting() && !client->hasLeft() && Listener::hasPeerLeft())
            server.leave(client);  // the answer then comes at once
    const std::string text = answer->take();
    if (text == Answer::noMemory) return refuse(response, 500, "there is too little memory");
    if (text.empty())
        response.status = 204;
    else
        response.set_content(text, jsonType);
}

void HttpLink::Routes::openEvents(Server& server, Response& response) {
    if (members_.isFull()) return refuse(response, 503, "64 clients follow the events already");
    const auto stay = std::make_shared<Stay>(server, members_);
    if (!stay->isMember()) return refuse(response, 503, "64 clients follow the events already");
    response.set_chunked_content_provider(
        "text/event-stream", [stay](std::size_t, DataSink& sink) { return stay->passOn(sink); });
}

bool Address::isLoopback() const {
    return host == "localhost" || host == "::1" || host.rfind("127.", 0) == 0;
}

Address Address::parse(const std::string& text) {
    Address address;
    const std::size_t colon = text.rfind(':');
    const std::string port = colon == std::string::npos ? text : text.substr(colon + 1);
    if (colon != std::string::npos && colon != 0) address.host = text.substr(0, colon);
    if (address.host.size() > 2 && address.host.front() == '[' && address.host.back() == ']')
        address.host = address.host.substr(1, address.host.size() - 2);
    const bool isNumber = !port.empty() && port.size() <= 5 &&
                          port.find_first_not_of("0123456789") == std::string::npos;
    if (!isNumber || std::stoi(port) > 65535)
        throw std::invalid_argument("it must be ADDRESS:PORT or PORT, with a port up to 65535");
    address.port = std::stoi(port);
    return address;
}

HttpLink::HttpLink(const Address& address, Gate::Rules rules)
    : address_(address), gate_(std::move(rules)), routes_(std::make_unique<Routes>(gate_)) {
    Listener& listener = routes_->listener;
    listener.set_socket_options([](socket_t socket) {
        const int isOn = 1;
        setsockopt(socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&isOn),
                   sizeof isOn);
    });
    listener.new_task_queue = [threads = routes_->threads] { return new Workers(threads); };
    listener.set_payload_max_length(Connection::mostBodyBytes);
    listener.set_keep_alive_timeout(Connection::idleS);
    listener.set_keep_alive_max_count(1000000);
    listener.set_idle_interval(std::chrono::milliseconds(100));
    listener.set_default_headers({{"Cache-Control", "no-store"},
                                  {"X-Content-Type-Options", "nosniff"},
                                  {"Referrer-Policy", "no-referrer"}});
    if (address_.port == 0)
        address_.port = listener.bind_to_any_port(address_.host);
    else if (!listener.bind_to_port(address_.host, address_.port))
        address_.port = -1;
    if (address_.port <= 0)
        throw std::runtime_error("cannot listen on " + address.host + ":" +
                                 std::to_string(address.port) +
                                 ": it is no address of this machine, or another program uses it");
}

HttpLink::~HttpLink() {
    isOver_ = true;
    routes_->listener.endAll();
    while (thread_.joinable() && !isThreadOver_) {
        routes_->listener.stopIfRunning();
        Sleep(lookMs);
    }
    if (thread_.joinable()) thread_.join();
    routes_->threads->end();
}

void HttpLink::serve(Server& server) {
    routes_->set(server);
    thread_ = std::thread([this] { listen(); });
}

void HttpLink::listen() {
    Listener& listener = routes_->listener;
    listener.listen_after_bind();
    // A connection that breaks at the wrong moment lets the library give up.
    while (!isOver_) {
        if (listener.bind_to_port(address_.host, address_.port)) listener.listen_after_bind();
        Sleep(lookMs);
    }
    isThreadOver_ = true;
}

std::string HttpLink::url() const {
    const bool isLong = address_.host.find(':') != std::string::npos;
    return "http://" + (isLong ? "[" + address_.host + "]" : address_.host) + ":" +
           std::to_string(address_.port) + "/";
}

}  // namespace qorctl::serve::http
