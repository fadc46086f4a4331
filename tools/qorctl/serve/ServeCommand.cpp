#include "serve/ServeCommand.h"

#include <windows.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>

#include "Conversation.h"
#include "HostPaths.h"
#include "Interrupt.h"
#include "operations/ParamSources.h"
#include "serve/Feeder.h"
#include "serve/http/HttpLink.h"
#include "serve/Server.h"
#include "serve/StdioLink.h"

namespace qorctl {
namespace {

struct ServeOptions {
    SessionOptions session;
    serve::Server::Options server;
    bool usesStdio = false;
    std::string listen;     ///< empty: nowhere
    std::string tokenFile;  ///< empty: none
    std::vector<std::string> hosts;
    std::string names;  ///< path of a list; empty: none
};

const char* const footer =
    "JSON-RPC 2.0: with --stdio one message per line on standard input and output, with --listen\n"
    "POST /rpc, GET /events (server-sent events), GET /metrics (Prometheus), GET /openrpc.json "
    "and\n"
    "a panel for people at GET /. What goes on is told on standard error. The method rpc.discover\n"
    "describes all others. It ends at the end of the input, when all requests are answered, or at\n"
    "Ctrl-C; actuators are given back and QOR is shut down, if the settings name its executable.\n"
    "Who may use it, and what they can do, is in docs/security.md.\n"
    "\n"
    "Example:  qorctl serve settings.ini --listen 8080\n"
    "          curl -H \"Content-Type: application/json\" http://127.0.0.1:8080/rpc -d\n"
    "          "
    "'{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"getParamData\",\"params\":{\"name\":"
    "\"EngineSpeed\"}}'";

constexpr unsigned int lookMs = 20;
constexpr unsigned int looksPerSign = 50;

std::string computerName() {
    char name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = sizeof name;
    return GetComputerNameA(name, &size) != FALSE ? name : "";
}

/// Throws std::runtime_error if it cannot listen there, or must not.
std::unique_ptr<serve::http::HttpLink> listening(const ServeOptions& options) {
    if (options.listen.empty()) return nullptr;
    serve::http::Gate::Rules rules;
    if (!options.tokenFile.empty())
        rules.token = serve::http::tokenIn(paths::absolute(options.tokenFile));
    rules.ownNames = options.hosts;
    rules.ownNames.push_back(computerName());
    return std::make_unique<serve::http::HttpLink>(serve::http::Address::parse(options.listen),
                                                   std::move(rules));
}

std::string whyNoAddress(const std::string& text) {
    try {
        serve::http::Address::parse(text);
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}

void addNames(serve::Server& server, Session& session, const std::string& listPath) {
    std::vector<std::string> names;
    try {
        for (const NamedParam& each : namesFor(session, listPath)) names.push_back(each.name);
    } catch (const std::runtime_error&) {
        if (!listPath.empty()) throw;  // else there just are none
    }
    server.names().add(names);
}

/// The host's log goes to the clients, too.
class LogToClients {
public:
    LogToClients(const ConsoleLog& log, serve::Server& server) : log_(log) {
        log_.listen(
            [&server](const char* level, const std::string& line) { server.tellLog(level, line); });
    }
    ~LogToClients() { log_.listen({}); }
    LogToClients(const LogToClients&) = delete;
    LogToClients& operator=(const LogToClients&) = delete;

private:
    const ConsoleLog& log_;
};

/// Returns when the server has ended; false: because its owner reads no more.
bool serveUntilEnd(serve::Server& server, const ServeOptions& options, serve::http::HttpLink* http,
                   Console& console) {
    std::optional<serve::StdioLink> stdio;
    if (options.usesStdio) stdio.emplace(server);
    if (http != nullptr) http->serve(server);
    console.line("qorctl serve: " +
                 (http != nullptr ? "listening on " + http->url() : std::string("ready")));
    const serve::Feeder watch(lookMs, [&](unsigned int count) {
        if (stdio && server.isEnding() && count % looksPerSign == 0) stdio->tellThatItEnds();
        if (!server.isAborted() && (interrupt::isRequested() || (stdio && stdio->isBroken())))
            server.end();
    });
    server.work();
    return !stdio || !stdio->isBroken();
}

int runServe(const ServeOptions& options) {
    std::unique_ptr<serve::http::HttpLink> http = listening(options);
    Conversation conversation("serve", options.session, {stderr, false, false});
    return conversation.run(nullptr, [&] {
        conversation.step("serve", [&] {
            Session& session = conversation.session();
            serve::Server server(
                {session.facade(), session.actuators(), session.options().settingsPath,
                 session.settings().transport(), session.trace().path()},
                options.server);
            // It uses the server, whatever ends that.
            const std::unique_ptr<serve::http::HttpLink> link = std::move(http);
            addNames(server, session, options.names);
            const LogToClients log(session.log(), server);
            const bool isRead = serveUntilEnd(server, options, link.get(), conversation.console());
            return isRead ? Outcome::success("ended in order")
                          : Outcome::failure("the client reads no more");
        });
    });
}

void declareLinks(CLI::App& command, ServeOptions& options) {
    CLI::Option* const stdio =
        command.add_flag("--stdio", options.usesStdio, "Over standard input and output");
    CLI::Option* const listen =
        command
            .add_option("--listen", options.listen,
                        "Over HTTP; the address is 127.0.0.1 unless it is given, port 0 takes one "
                        "that is free and tells it")
            ->type_name("[ADDRESS:]PORT")
            ->check(whyNoAddress);
    command
        .add_option("--token-file", options.tokenFile,
                    "Clients over HTTP must send the token in its first line; only so ADDRESS "
                    "may be another than this machine's own")
        ->type_name("FILE")
        ->check(paths::whyNotAbsolute)
        ->needs(listen);
    command
        .add_option("--allow-host", options.hosts,
                    "A further name by which clients over HTTP know this machine")
        ->type_name("NAME")
        ->needs(listen);
    command.parse_complete_callback([stdio, listen, &options] {
        if (stdio->count() == 0 && listen->count() == 0)
            throw CLI::ValidationError("one of --stdio and --listen is needed");
        if (!options.listen.empty() && options.tokenFile.empty() &&
            !serve::http::Address::parse(options.listen).isLoopback())
            throw CLI::ValidationError("--listen",
                                       "other machines may come in only with --token-file");
    });
}

}  // namespace

Action declareServe(CLI::App& command) {
    const auto options = std::make_shared<ServeOptions>();
    options->session.keepsGoing = true;
    options->session.declare(command);
    declareLinks(command, *options);
    command.add_flag("--read-only", options->server.isReadOnly,
                     "Refuse all that changes QOR or the ECU");
    command.add_flag("--allow-shutdown", options->server.mayBeEnded,
                     "Every client may end the server");
    command.add_flag("--boxes-to-clients", options->server.asksClients,
                     "QOR's message boxes are not shown but put before the clients, who have a "
                     "minute each to answer");
    command
        .add_option("--names", options->names,
                    "Parameters that clients are told of: a file with a name per line")
        ->type_name("FILE")
        ->check(CLI::ExistingFile);
    command.footer(footer);
    return [options] { return runServe(*options); };
}

}  // namespace qorctl
