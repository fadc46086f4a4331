#include "Faults.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <windows.h>

#include <io.h>
#include <process.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <mutex>
#include <new>
#include <type_traits>

#include "Fallible.h"
#include "HostsOwn.h"
#include "support/ImportTable.h"

namespace torture {
namespace {

/// So many of the library's milliseconds pass in one.
constexpr DWORD haste = 5;

enum class Row : std::size_t {
#define QOR_ROW(function, result, error, works) function,
    QOR_FALLIBLE(QOR_ROW)
#undef QOR_ROW
        splitPath,  // overloaded in the header
    allocation,
    memory
};

enum class Mode { rest, record, fail };

struct Plan {
    std::mutex mutex;
    std::atomic<Mode> mode{Mode::rest};
    Site target;
    unsigned int perPlace = 0;
    std::atomic<bool> hasFailed{false};
    std::map<std::pair<std::size_t, std::size_t>, unsigned int> calls;
    std::vector<Site> sites;
    std::size_t base = 0;
    DWORD thread = 0;  // which records or fails
};

Plan& plan() {
    static auto* const only = new Plan;  // for threads that outlive everything
    return *only;
}

/// One call at a time looks at the plan; the system's error stays what it was.
bool mustFail(Row row, void* from) {
    Plan& all = plan();
    const Mode mode = all.mode;
    if (mode == Mode::rest) return false;
    const DWORD error = GetLastError();
    const std::lock_guard<std::mutex> guard(all.mutex);
    Site site;
    site.row = static_cast<std::size_t>(row);
    site.place = reinterpret_cast<std::size_t>(from) - all.base;
    site.earlier = all.calls[{site.row, site.place}]++;
    if (mode == Mode::record && site.earlier < all.perPlace) all.sites.push_back(site);
    const bool isTarget =
        site == all.target || (site.row == all.target.row && all.target.place == 0);
    const bool fails = mode == Mode::fail && isTarget && !all.hasFailed.exchange(true);
    SetLastError(error);
    return fails;
}

template <class Result>
Result resultOf(std::intptr_t number) {
    if constexpr (std::is_pointer_v<Result>)
        return reinterpret_cast<Result>(number);
    else
        return static_cast<Result>(number);
}

struct Failing {
    std::intptr_t result;
    DWORD error;
    bool worksAllTheSame;
};

constexpr Failing failing[] = {
#define QOR_ROW(function, result, error, works) {result, error, works},
    QOR_FALLIBLE(QOR_ROW)
#undef QOR_ROW
};

/// In place of a function of this type.
template <Row row, class Function>
struct InPlaceOf;

#define QOR_IN_PLACE(convention)                                                            \
    template <Row row, class Result, class... Arguments>                                    \
    struct InPlaceOf<row, Result(convention*)(Arguments...)> {                              \
        static inline Result(convention* original)(Arguments...) = nullptr;                 \
        static Result convention call(Arguments... arguments) {                             \
            if (!mustFail(row, __builtin_return_address(0))) return original(arguments...); \
            const Failing& how = failing[static_cast<std::size_t>(row)];                    \
            if (how.worksAllTheSame) original(arguments...);                                \
            SetLastError(how.error);                                                        \
            return resultOf<Result>(how.result);                                            \
        }                                                                                   \
    };
QOR_IN_PLACE(__stdcall)
QOR_IN_PLACE(__cdecl)
#undef QOR_IN_PLACE

void* (*originalNew)(std::size_t) = nullptr;

void* newOrNot(std::size_t bytes) {
    if (mustFail(Row::allocation, __builtin_return_address(0))) throw std::bad_alloc();
    return originalNew(bytes);
}

void* (*originalMalloc)(std::size_t) = nullptr;

void* mallocOrNot(std::size_t bytes) {
    const bool isHosts = GetCurrentThreadId() == plan().thread;
    return isHosts && mustFail(Row::memory, __builtin_return_address(0)) ? nullptr
                                                                         : originalMalloc(bytes);
}

using SplitPath = errno_t (*)(const char*, char*, std::size_t, char*, std::size_t, char*,
                              std::size_t, char*, std::size_t);
SplitPath originalSplit = nullptr;

errno_t splitOrNot(const char* path, char* drive, std::size_t driveChars, char* directory,
                   std::size_t directoryChars, char* name, std::size_t nameChars, char* extension,
                   std::size_t extensionChars) {
    if (mustFail(Row::splitPath, __builtin_return_address(0))) return EINVAL;
    return originalSplit(path, drive, driveChars, directory, directoryChars, name, nameChars,
                         extension, extensionChars);
}

DWORD WINAPI hastyTicks() {
    return static_cast<DWORD>(GetTickCount64() * haste);
}

void WINAPI hastySleep(DWORD ms) {
    Sleep(ms == 0 ? 0 : std::max<DWORD>(ms / haste, 1));
}

DWORD WINAPI hastyWait(HANDLE handle, DWORD ms) {
    return WaitForSingleObject(handle,
                               ms == 0 || ms == INFINITE ? ms : std::max<DWORD>(ms / haste, 1));
}

template <class Function>
void* asAddress(Function function) {
    return reinterpret_cast<void*>(function);
}

struct Replacement {
    const char* function;
    void* address;
    void** original;
};

const std::vector<Replacement>& replacements() {
    static const std::vector<Replacement> all = {
#define QOR_ROW(function, result, error, works)                                    \
    {#function, asAddress(&InPlaceOf<Row::function, decltype(&::function)>::call), \
     reinterpret_cast<void**>(&InPlaceOf<Row::function, decltype(&::function)>::original)},
        QOR_FALLIBLE(QOR_ROW)
#undef QOR_ROW
            {"_splitpath_s", asAddress(&splitOrNot), reinterpret_cast<void**>(&originalSplit)},
        {"_Znwj", asAddress(&newOrNot), reinterpret_cast<void**>(&originalNew)},
        {"malloc", asAddress(&mallocOrNot), reinterpret_cast<void**>(&originalMalloc)}};
    return all;
}

const Replacement* find(const std::string& function) {
    for (const Replacement& each : replacements())
        if (function == each.function) return &each;
    return nullptr;
}

template <std::size_t count>
bool isAmong(const char* const (&names)[count], const std::string& name) {
    return std::any_of(std::begin(names), std::end(names),
                       [&](const char* each) { return name == each; });
}

void* hasty(const std::string& function) {
    if (function == "GetTickCount") return asAddress(&hastyTicks);
    if (function == "Sleep") return asAddress(&hastySleep);
    return nullptr;
}

/// Whether memory comes from inside of the module, or else from another one: then only what is
/// printed still asks the system for some here.
bool bringsRunTimes(const std::vector<imports::Import>& all) {
    return std::none_of(all.begin(), all.end(),
                        [](const auto& each) { return each.function == "_Znwj"; });
}

void beginAnew() {
    rest();
    Plan& all = plan();
    const std::lock_guard<std::mutex> guard(all.mutex);
    all.calls.clear();
    all.sites.clear();
    all.hasFailed = false;
    all.thread = GetCurrentThreadId();
}

}  // namespace

Site anywhere(const char* function) {
    Site site;
    while (std::strcmp(replacements()[site.row].function, function) != 0) ++site.row;
    return site;
}

const char* functionOf(const Site& site) {
    return replacements()[site.row].function;
}

std::string nameOf(const Site& site) {
    char place[64];
    std::snprintf(place, sizeof place, " before +0x%zx, call %u", site.place, site.earlier + 1);
    return functionOf(site) + std::string(place);
}

std::vector<std::string> unknownImports(const char* moduleName) {
    std::vector<std::string> unknown;
    const std::vector<imports::Import> all = imports::of(moduleName);
    const bool isInside = bringsRunTimes(all);
    for (const imports::Import& each : all)
        if (find(each.function) == nullptr && !isAmong(infallible, each.function) &&
            !isAmong(ofRunTime, each.function) && !isAmong(runTimeModules, each.module) &&
            !(isInside && isAmong(ofRunTimesInside, each.function)))
            unknown.push_back(each.module + " " + each.function);
    return unknown;
}

std::size_t tortured(const char* moduleName) {
    const auto all = imports::of(moduleName);
    return static_cast<std::size_t>(std::count_if(
        all.begin(), all.end(), [](const auto& each) { return find(each.function) != nullptr; }));
}

Replaced::Replaced(const char* moduleName) {
    plan().base = reinterpret_cast<std::size_t>(GetModuleHandleA(moduleName));
    const std::vector<imports::Import> all = imports::of(moduleName);
    const bool isInside = bringsRunTimes(all);
    for (const imports::Import& each : all) {
        if (each.function == "malloc" && !isInside) continue;
        const Replacement* const fallible = find(each.function);
        void* const address = fallible != nullptr ? fallible->address : hasty(each.function);
        if (address == nullptr) continue;
        if (fallible != nullptr)
            *fallible->original =
                each.function == "WaitForSingleObject" ? asAddress(&hastyWait) : *each.address;
        before_.emplace_back(each.address, imports::replace(each.address, address));
    }
}

Replaced::~Replaced() {
    rest();
    for (const auto& [place, address] : before_) imports::replace(place, address);
}

void record(unsigned int perPlace) {
    beginAnew();
    plan().perPlace = perPlace;
    plan().mode = Mode::record;
}

void fail(const Site& site) {
    beginAnew();
    plan().target = site;
    plan().mode = Mode::fail;
}

void rest() {
    const std::lock_guard<std::mutex> guard(plan().mutex);
    plan().mode = Mode::rest;
}

bool hasFailed() {
    return plan().hasFailed;
}

// Only what the library calls is replaced here.
HostsOwn::HostsOwn() noexcept : before_(false) {}

HostsOwn::~HostsOwn() = default;

std::vector<Site> recorded() {
    const std::lock_guard<std::mutex> guard(plan().mutex);
    return plan().sites;
}

}  // namespace torture
