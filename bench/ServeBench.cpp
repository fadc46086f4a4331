#include "ServeBench.h"

#include <windows.h>

#include <fmt/core.h>

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "common/Deadline.h"
#include "Settings.h"

namespace {

using nlohmann::json;

constexpr unsigned int readyMs = 15000;
constexpr unsigned int longPeriodMs = 10u * 60u * 1000u;

const char* const subscribeRequest =
    R"({"jsonrpc":"2.0","id":1,"method":"startParamRead","params":{"names":["EngineSpeed",)"
    R"("EngineLoad","VehicleSpeed","CoolantTemperature","OilTemperature","IntakeAirTemperature",)"
    R"("ExhaustTemperature","AmbientPressure","ManifoldPressure","OilPressure","FuelPressure",)"
    R"("BatteryVoltage"]}})";

std::string mustBeResult(std::string answer) {
    if (answer.find("\"result\"") == std::string::npos)
        throw std::runtime_error("the server refuses: " + answer);
    return answer;
}

}  // namespace

const char* const ServeBench::pingRequest =
    R"({"jsonrpc":"2.0","id":1,"method":"pingQor","params":{"timeoutMs":2000}})";
const char* const ServeBench::readRequest = R"({"jsonrpc":"2.0","id":1,"method":"getParamData",)"
                                            R"("params":{"name":"EngineSpeed","timeoutMs":2000}})";

ServeBench::ServeBench() : settingsPath_(writeSettings(Transport::tcp, "serve")) {
    process_ = std::make_unique<PipedProcess>(
        "qorctl.exe", "serve \"" + settingsPath_ + "\" --stdio --listen 127.0.0.1:0");
    awaitPort();
    ask(R"({"jsonrpc":"2.0","id":1,"method":"pingQor","params":{"timeoutMs":15000}})");
    connect(0);
}

ServeBench::~ServeBench() {
    process_.reset();
    DeleteFileA(settingsPath_.c_str());
}

void ServeBench::awaitPort() {
    const std::string words = "listening on http://127.0.0.1:";
    const auto deadline = common::Deadline::after(common::now(), readyMs);
    std::size_t at = std::string::npos;
    std::string told;
    while (at == std::string::npos) {
        if (deadline.hasPassed()) throw std::runtime_error("qorctl serve does not listen: " + told);
        common::sleepMs(20);
        told = process_->errors();
        at = told.find(words);
    }
    port_ = static_cast<unsigned int>(std::stoul(told.substr(at + words.size())));
}

std::string ServeBench::ask(const std::string& request) {
    process_->write(request + "\n");
    while (true) {
        std::string line = process_->readLine();
        if (line.find("\"method\"") == std::string::npos) return mustBeResult(std::move(line));
    }
}

void ServeBench::connect(unsigned int refreshPeriodMs) {
    if (periodMs_ == refreshPeriodMs) return;
    ask(fmt::format(R"({{"jsonrpc":"2.0","id":1,"method":"connect","params":)"
                    R"({{"settings":{{"refreshPeriodMs":{}}}}}}})",
                    refreshPeriodMs));
    periodMs_ = refreshPeriodMs;
    ask(readRequest);
}

void ServeBench::readParam() {
    connect(0);
    ask(readRequest);
}

void ServeBench::readCachedParam() {
    connect(longPeriodMs);
    ask(readRequest);
}

Subscriber::Subscriber(unsigned int port) : port_(port), events_(port) {
    events_.openEvents("/events");
    HttpCaller::Event hello;
    while (hello.name != "hello")
        if (!events_.nextEvent(hello)) throw std::runtime_error("the server says no hello");
    client_ = json::parse(hello.data).at("client").get<std::string>();
    thread_ = std::thread([this] { take(); });
}

Subscriber::~Subscriber() {
    events_.close();
    thread_.join();
}

void Subscriber::subscribe() {
    HttpCaller caller(port_);
    mustBeResult(caller.post("/rpc", "X-Qor-Client: " + client_ + "\r\n", subscribeRequest));
}

void Subscriber::take() {
    for (HttpCaller::Event event; events_.nextEvent(event);) {
        if (event.name != "values") continue;
        const json told = json::parse(event.data);
        values_ += static_cast<long>(told.at("samples").size());
        for (const json& sample : told.at("samples"))
            if (sample.at(3).get<long>() > missed_) missed_ = sample.at(3).get<long>();
    }
}
