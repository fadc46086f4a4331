#include "profile/ProfileFigures.h"

#include <fmt/core.h>

#include <windows.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "FacadeBench.h"
#include "profile/RequestPath.h"
#include "protocol/RequestId.h"
#include "Samples.h"
#include "StreamBench.h"

namespace {

using profile::Call;
using profile::Hop;
using profile::Wake;

/// Until the call that has woken the host has come to its end, too.
constexpr DWORD settleMs = 3;

/// "A, A, B" as "2 A, B"; calls in a row only.
std::string inShort(const std::vector<std::string>& calls) {
    std::string text;
    for (std::size_t i = 0; i < calls.size();) {
        std::size_t end = i;
        while (end < calls.size() && calls[end] == calls[i]) ++end;
        text += (text.empty() ? "" : ", ") + (end - i > 1 ? fmt::format("{} ", end - i) : "") +
                calls[i];
        i = end;
    }
    return text;
}

/// The requests that have gone the same way.
struct Way {
    int count = 0;
    std::vector<Samples> hops;
    std::vector<Samples> inSystem;
    std::vector<std::map<std::string, int>> calls;  // how often which ones, in short
};

/// What was seen of one kind of request.
class Profile {
public:
    void add(const std::vector<Call>& calls, double startUs, double endUs) {
        total_.add(endUs - startUs);
        addPath(profile::pathOf(calls, GetCurrentThreadId(), startUs, endUs));
        for (const Call& call : calls) {
            if (call.startUs > endUs) continue;
            ++counts_[call.function];
            us_[call.function] += call.us();
            if (call.role == profile::Role::wait) ++wakes_[call.wake];
        }
    }

    void print(const std::string& name) const {
        fmt::print("\n{}: p50 {:.0f} us of {} requests, their calls recorded\n\n", name,
                   total_.p50(), total_.count());
        printWay();
        printCalls();
    }

private:
    void addPath(const std::vector<Hop>& hops) {
        std::string signature;
        for (const Hop& hop : hops) signature += hop.name + "; ";
        Way& way = ways_[signature];
        ++way.count;
        way.hops.resize(hops.size());
        way.inSystem.resize(hops.size());
        way.calls.resize(hops.size());
        for (std::size_t i = 0; i < hops.size(); ++i) {
            way.hops[i].add(hops[i].us);
            way.inSystem[i].add(hops[i].inSystemUs);
            ++way.calls[i][inShort(hops[i].calls)];
        }
    }

    void printWay() const {
        const auto& [signature, way] =
            *std::max_element(ways_.begin(), ways_.end(), [](const auto& one, const auto& other) {
                return one.second.count < other.second.count;
            });
        fmt::print(
            "| hop ({} of {} requests went so) | p50 us | in calls | most often these |\n"
            "|---|---|---|---|\n",
            way.count, total_.count());
        std::size_t at = 0;
        for (std::size_t i = 0; i < way.hops.size(); ++i) {
            const std::size_t end = signature.find("; ", at);
            const auto usual = std::max_element(
                way.calls[i].begin(), way.calls[i].end(),
                [](const auto& one, const auto& other) { return one.second < other.second; });
            fmt::print("| {} | {:.0f} | {:.0f} | {} |\n", signature.substr(at, end - at),
                       way.hops[i].p50(), way.inSystem[i].p50(), usual->first);
            at = end + 2;
        }
    }

    void printCalls() const {
        const double requests = static_cast<double>(total_.count());
        fmt::print("\n| call, of all threads | per request | us each |\n|---|---|---|\n");
        for (const auto& [function, count] : counts_)
            fmt::print("| {} | {:.2f} | {:.0f} |\n", function, count / requests,
                       us_.at(function) / count);
        const auto per = [&](Wake wake) {
            const auto found = wakes_.find(wake);
            return found != wakes_.end() ? found->second / requests : 0;
        };
        fmt::print(
            "\nWaits per request that ended by an event {:.2f}, by a message {:.2f}, by the "
            "time {:.2f}; looks without a wait {:.2f}.\n",
            per(Wake::event), per(Wake::message), per(Wake::timer), per(Wake::atOnce));
    }

    Samples total_;
    std::map<std::string, Way> ways_;
    std::map<std::string, int> counts_;
    std::map<std::string, double> us_;
    std::map<Wake, int> wakes_;
};

void profileOne(profile::Recorder& recorder, Profile& profile,
                const std::function<void()>& request) {
    recorder.start();
    const double startUs = nowUs();
    request();
    const double endUs = nowUs();
    Sleep(settleMs);
    profile.add(recorder.stop(), startUs, endUs);
}

struct Profiles {
    Profile ping, read;
};

void profileOf(Transport transport, Profiles& profiles, int count) {
    FacadeBench facade(transport);
    profile::Recorder recorder;
    for (int i = 0; i < count; ++i) {
        profileOne(recorder, profiles.ping, [&] { facade.ping(); });
        profileOne(recorder, profiles.read, [&] { facade.readParam(); });
    }
}

/// Over TCP, beside a stream, whose values make calls of their own.
void profileBeside(Profile& profile, int count) {
    constexpr StreamBench::Push oneEveryMs{0, 1, 1000};
    StreamBench stream(Transport::tcp);
    profile::Recorder recorder;
    stream.startStream();
    stream.setPush(oneEveryMs);
    const auto taker = stream.taker();
    for (int i = 0; i < count; ++i) profileOne(recorder, profile, [&] { stream.read(); });
}

}  // namespace

int printProfile(int rounds, int perRound) {
    Samples fill;
    measure(fill, perRound, [] { protocol::drawRequestId(); });
    fmt::print("A generator fill takes {:.0f} us (p50).\n", fill.p50());
    Profiles tcp, window;
    profileOf(Transport::tcp, tcp, rounds * perRound);
    profileOf(Transport::window, window, rounds * perRound);
    Profile beside;
    profileBeside(beside, rounds * perRound);
    tcp.ping.print("pingQor, TCP");
    tcp.read.print("getParamData, one value, TCP");
    window.ping.print("pingQor, window");
    window.read.print("getParamData, one value, window");
    beside.print("getParamData beside 1 value per ms, TCP");
    fmt::print("\nprofile made of {} requests of each kind\n", rounds * perRound);
    return 0;
}
