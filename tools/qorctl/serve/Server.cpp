#include "serve/Server.h"

#include <windows.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <new>
#include <utility>
#include <vector>

#include "JsonText.h"
#include "qorcontrol/MessageBoxes.h"
#include "serve/rpc/Failure.h"
#include "serve/rpc/Hint.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;

/// So often it is looked at what has arrived, in milliseconds; the rest is looked at less often.
constexpr unsigned int lookMs = 10;
constexpr unsigned int looksPerState = 5;
constexpr unsigned int looksPerTrace = 10;

/// All that waits together: a text takes up to twenty times its size in memory.
constexpr std::size_t mostWaitingBytes = 16 * 1024 * 1024;

void append(Methods& all, Methods more) {
    all.insert(all.end(), std::make_move_iterator(more.begin()),
               std::make_move_iterator(more.end()));
}

/// Why something failed, as it stands in the figures.
std::string reasonOf(const Failure& failure) {
    const bool isTold = failure.data.is_object() && failure.data.contains("name");
    return isTold ? failure.data["name"].get<std::string>() : nameOf(failure.code);
}

std::string checkOf(const Failure& failure) {
    return failure.data.is_object() ? failure.data.value("check", "") : "";
}

/// What `run` gives, or why it does not.
std::optional<Failure> failureOf(const std::function<void()>& run) {
    try {
        run();
        return std::nullopt;
    } catch (const Failure& failure) {
        return failure;
    } catch (const std::bad_alloc&) {
        return Failure{RpcCode::internalError, "there is too little memory"};
    } catch (const std::exception& error) {
        return Failure{RpcCode::internalError, error.what()};
    }
}

/// A message that waits, by its size.
class Weight {
public:
    Weight(std::atomic<std::size_t>& all, std::size_t bytes) : all_(all), bytes_(bytes) {
        const std::size_t others = all_.fetch_add(bytes_);
        isTooMuch_ = others != 0 && others + bytes_ > mostWaitingBytes;
    }
    ~Weight() { all_ -= bytes_; }
    Weight(const Weight&) = delete;
    Weight& operator=(const Weight&) = delete;

    bool isTooMuch() const { return isTooMuch_; }

private:
    std::atomic<std::size_t>& all_;
    const std::size_t bytes_;
    bool isTooMuch_ = false;
};

}  // namespace

Server::Server(const Backing& backing, const Options& options)
    : backing_(backing),
      options_(options),
      lines_(options.longestLine),
      control_(backing.held, audience_),
      values_(backing.facade, [this](auto work) { lines_.addInAnyCase(0, std::move(work)); }),
      codes_(backing.facade, [this](auto work) { lines_.addInAnyCase(0, std::move(work)); }),
      trace_(backing.trace),
      observer_(backing.facade, audience_, options.asksClients) {
    if (options_.asksClients)
        // What the library itself would say comes after the server's own answer.
        qorcontrol::setBoxPolicy(backing.facade, qorcontrol::BoxPolicy::ask, IDOK,
                                 2 * Observer::boxPatienceMs);
    fillMethods();
    std::vector<std::string> names;
    for (const Method& each : methods_) names.push_back(each.name);
    metrics_.emplace(names);
    feeder_.emplace(lookMs, [this](unsigned int count) { look(count); });
}

Server::~Server() {
    feeder_.reset();
    for (const auto& each : audience_.all()) values_.endOf(each->number());
    values_.tidy();
}

void Server::fillMethods() {
    append(methods_, connectionMethods(backing_.facade));
    append(methods_, parameterMethods(backing_.facade));
    append(methods_, control_.methods());
    append(methods_, diagnosticMethods(backing_.facade));
    append(methods_, values_.methods());
    append(methods_, codes_.methods());
    append(methods_, trace_.methods());
    append(methods_, names_.methods());
    append(methods_, ownMethods());
}

std::shared_ptr<Client> Server::join(Client::Kind kind, std::shared_ptr<Outlet> outlet) {
    auto client = std::make_shared<Client>(++lastClient_, kind, std::move(outlet), isAborted_);
    audience_.add(client);
    tell(*client, "state", observer_.state());
    return client;
}

std::shared_ptr<Client> Server::passing() {
    return std::make_shared<Client>(++lastClient_, Client::Kind::passing, nullptr, isAborted_);
}

void Server::leave(const std::shared_ptr<Client>& client) {
    client->leave();
    lines_.forget(client->number());
    audience_.remove(client->number());
    trace_.endOf(client->number());
    lines_.addFirst([this, number = client->number()] { bringToAnEnd(number); });
}

void Server::sendOff(const std::shared_ptr<Client>& client) {
    audience_.remove(client->number());
    trace_.endOf(client->number());
    lines_.addInAnyCase(client->number(),
                        [this, number = client->number()] { bringToAnEnd(number); });
}

void Server::bringToAnEnd(ClientNumber client) {
    control_.giveBackOf(client);
    values_.endOf(client);
    codes_.endOf(client);
    values_.tidy();
    codes_.tidy();
}

void Server::receive(const std::shared_ptr<Client>& client, const std::string& text, Reply reply) {
    // Before it is taken apart, which is what needs memory.
    const auto weight = std::make_shared<Weight>(waitingBytes_, text.size());
    if (weight->isTooMuch())
        return reply(responseOf(nullptr, Failure{RpcCode::busy, "too much waits already"}));
    std::optional<Message> message;
    if (const auto failure = failureOf([&] { message = messageOf(text); }))
        return reply(responseOf(nullptr, *failure));
    const auto answers = std::make_shared<Answers>(
        message->isBatch, message->requests.size(),
        [weight, reply = std::move(reply)](const json& whole) { reply(whole); });
    for (Request& each : message->requests) take(client, std::move(each), answers);
}

void Server::take(const std::shared_ptr<Client>& client, Request&& request,
                  const std::shared_ptr<Answers>& answers) {
    const auto pending = std::make_shared<Pending>(answers, request.id, request.isNotification);
    const Method* method = nullptr;
    auto failure = failureOf([&] { method = &checked(request, *client); });
    if (!failure && method->way == Method::Way::atOnce)
        return answer(*pending, *method, request.params, client);
    if (!failure) {
        if (method->noteWhenAsked != nullptr)
            request.params["whenAsked"] = method->noteWhenAsked(*client);
        const auto arguments = std::make_shared<json>(std::move(request.params));
        const auto work = [this, client, pending, method, arguments] {
            answer(*pending, *method, *arguments, client);
        };
        if (lines_.add(client->number(), work)) return;
        failure = isEnding_ ? Failure{RpcCode::ending, "the server ends"}
                            : Failure{RpcCode::busy, "too many requests of this client wait"};
    }
    metrics_->refused(request.method, failure->code);
    pending->answer(*failure);
}

const Method& Server::checked(Request& request, const Client& client) const {
    if (request.failure) throw Failure(*request.failure);
    const Method& method = methodOf(request.method);
    if (options_.isReadOnly && method.effect == Method::Effect::changes)
        throw Failure{RpcCode::readOnly, "the server may only look"};
    if (method.isForLasting && !client.isLasting())
        throw Failure{RpcCode::refused,
                      "that is for clients that stay: open GET /events and send the id of its "
                      "event \"hello\" as X-Qor-Client"};
    request.params = argumentsOf(method.params, request.params);
    return method;
}

const Method& Server::methodOf(const std::string& name) const {
    const auto found = std::find_if(methods_.begin(), methods_.end(),
                                    [&](const Method& each) { return each.name == name; });
    if (found != methods_.end()) return *found;
    std::vector<std::string> names;
    for (const Method& each : methods_) names.push_back(each.name);
    throw Failure{RpcCode::methodNotFound, "there is no method " + quotedWithHint(name, names)};
}

void Server::answer(Pending& pending, const Method& method, const json& arguments,
                    const std::shared_ptr<Client>& client) {
    json result;
    const Clock::time_point begin = Clock::now();
    const auto failure = failureOf([&] { result = carryOut(method, arguments, client); });
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    if (failure)
        metrics_->finished(method.name, reasonOf(*failure), seconds, failure->message,
                           checkOf(*failure));
    else
        metrics_->finished(method.name, "", seconds);
    failure ? pending.answer(*failure) : pending.answer(std::move(result));
}

json Server::carryOut(const Method& method, const json& arguments,
                      const std::shared_ptr<Client>& client) {
    std::optional<Observer::LettingGo> lettingGo;
    if (method.letsEcuGo) {
        control_.giveAllBack();
        observer_.noteSegment("");
        lettingGo.emplace(observer_);
    }
    const auto connect = observer_.connectIf(method.name == "connect");
    // It may have gone while its message was taken apart: what it has is given back already.
    if (client->hasLeft()) throw Failure{RpcCode::ending, "the client has left"};
    json result = method.run(arguments, client);
    if (method.way != Method::Way::inTurn) return result;
    names_.learn(method, arguments, result);
    if (method.name == "setEcuSegment") observer_.noteSegment(arguments["segment"]);
    return withWarning(std::move(result));
}

void Server::tellLog(const char* level, const std::string& line) {
    audience_.tell("log", {{"level", level}, {"line", utf8Of(line)}});
}

void Server::look(unsigned int count) {
    if (isEnding_) return;  // that was the last event
    for (const std::string& name : control_.takeOverdue())
        lines_.addFirst([this, name] { control_.giveBackOverdue(name); });
    const ValueStreams::Counts counts = values_.feed();
    if (counts.sent != 0) metrics_->streamValues(counts.sent);
    if (counts.missed != 0) metrics_->streamMissed(counts.missed);
    if (count % looksPerState == 0) {
        if (observer_.look()) metrics_->reconnected();
        codes_.feed();
    }
    if (count % looksPerTrace == 0) trace_.feed();
}

void Server::work() {
    while (const auto next = lines_.next())
        // Who was not answered for want of memory is told so at the end of what was to be done.
        failureOf(*next);
}

void Server::endWhenDone() {
    isEnding_ = true;
    audience_.tell("serverEnds", json::object());
    lines_.end();
}

void Server::end() {
    isEnding_ = true;
    isAborted_ = true;
    lines_.forgetAll();
    endWhenDone();
}

}  // namespace qorctl::serve
