#include "Faults.h"

#include <execinfo.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

#include "HostsOwn.h"

extern "C" void __sanitizer_symbolize_pc(void* address, const char* format, char* text,
                                         std::size_t textBytes);

namespace torture {
namespace {

constexpr std::size_t maxSites = 8192;
/// Of the stack: `mustFail` itself, and the replaced call.
constexpr int ownFrames = 2;

enum class Mode { rest, record, fail };

/// In memory that parent and child share.
struct Plan {
    std::atomic<Mode> mode{Mode::rest};
    std::atomic_flag busy = ATOMIC_FLAG_INIT;
    std::atomic<bool> hasFailed{false};
    Site target;
    std::size_t count = 0;
    std::array<Site, maxSites> sites;
};

Plan& plan() {
    static Plan* const shared = [] {
        void* const memory =
            mmap(nullptr, sizeof(Plan), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) std::abort();
        return new (memory) Plan;
    }();
    return *shared;
}

class Busy {
public:
    Busy() {
        while (plan().busy.test_and_set(std::memory_order_acquire)) {
        }
    }
    ~Busy() { plan().busy.clear(std::memory_order_release); }
};

thread_local bool isThisWatched = false;

/// The return addresses at the outer end of a watched thread's stack that are the test's own.
thread_local int framesOfTest = 0;

constexpr int maxDepth = 80;

Site siteOf(Call call) {
    void* stack[maxDepth];
    const int depth = backtrace(stack, maxDepth) - ownFrames - framesOfTest;
    Site site;
    site.call = call;
    site.frames = std::min(static_cast<std::size_t>(std::max(depth, 0)), Site::maxFrames);
    std::copy_n(stack + ownFrames, site.frames, site.stack.begin());
    return site;
}

void add(const Site& site) {
    Plan& all = plan();
    const Busy busy;
    const auto end = all.sites.begin() + static_cast<std::ptrdiff_t>(all.count);
    if (all.count < maxSites && std::find(all.sites.begin(), end, site) == end) {
        all.sites[all.count] = site;
        ++all.count;
    }
}

bool isOfLibrary(const std::string& function) {
    return function.find("std::") != 0 && function.find("operator new") != 0 &&
           function.find("__gnu_cxx::") == std::string::npos &&
           function.find("torture::") == std::string::npos && function.find("__wrap") != 0 &&
           function.find('(') != 0 && function[0] != '\0';
}

}  // namespace

const char* nameOf(Call call) {
    static const char* const names[] = {"allocation", "create event", "set event", "reset event",
                                        "wait",       "begin thread", "exit code", "close handle",
                                        "module",     "open thread"};
    return names[static_cast<int>(call)];
}

std::string nameOf(const Site& site) {
    std::string name = nameOf(site.call);
    int named = 0;
    for (std::size_t i = 0; i < site.frames && named < 4; ++i) {
        char text[512] = "";
        auto* const call = static_cast<char*>(site.stack[i]) - 1;
        __sanitizer_symbolize_pc(call, "%f", text, sizeof text);
        const std::string function(text);
        if (function.empty() || !isOfLibrary(function)) continue;
        name += (named == 0 ? " in " : " < ") + function.substr(0, function.find('('));
        ++named;
    }
    return name;
}

bool mustFail(Call call) noexcept {
    if (!isThisWatched) return false;
    const Mode mode = plan().mode;
    if (mode == Mode::rest) return false;
    const Watched notInHere(false);
    const Site site = siteOf(call);
    if (mode == Mode::record) add(site);
    return mode == Mode::fail && site == plan().target && !plan().hasFailed.exchange(true);
}

bool isWatched() noexcept {
    return isThisWatched;
}

void beginHere() noexcept {
    void* stack[maxDepth];
    framesOfTest = backtrace(stack, maxDepth) - 1;
}

Watched::Watched(bool nowWatched) noexcept : before_(isThisWatched) {
    isThisWatched = nowWatched;
}

Watched::~Watched() {
    isThisWatched = before_;
}

HostsOwn::HostsOwn() noexcept : before_(isThisWatched) {
    isThisWatched = false;
}

HostsOwn::~HostsOwn() {
    isThisWatched = before_;
}

void record() noexcept {
    plan().mode = Mode::record;
}

void fail(const Site& site) noexcept {
    plan().target = site;
    plan().mode = Mode::fail;
}

void rest() noexcept {
    plan().mode = Mode::rest;
}

bool hasFailed() noexcept {
    return plan().hasFailed;
}

std::vector<Site> recorded() {
    const Plan& all = plan();
    return {all.sites.begin(), all.sites.begin() + static_cast<std::ptrdiff_t>(all.count)};
}

void forget() noexcept {
    rest();
    plan().busy.clear();  // of a child that was ended with it
    plan().hasFailed = false;
    plan().count = 0;
}

}  // namespace torture
