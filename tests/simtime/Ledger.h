#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

#include "Machine.h"

namespace simtime {

/// What data is about.
struct Topic {
    enum Kind { codes, canValues, kwp, description, values, arrays } kind;
    unsigned int param = 0;

    bool operator<(const Topic& other) const {
        return std::tie(kind, param) < std::tie(other.kind, other.param);
    }
    bool operator==(const Topic& other) const { return kind == other.kind && param == other.param; }
};
using Topics = std::vector<Topic>;

/// QOR's own account of what it owes and has told on the present connection: the answers that the
/// library may rightly mark as perhaps an earlier request's, and the second copies that nobody can
/// tell from the answer to the next request. Places are counts of bytes sent to the library.
class Ledger {
public:
    /// Another connection: nothing is owed, and what is on its way to the library is lost.
    void begin();
    /// Another model: what the library has asked of parameters has lost its meaning for it.
    void openModel();

    /// A request was taken. When the library began with it, it had read QOR's bytes up to `known`.
    void take(std::uint32_t requestId, const Topics& topics, std::uint64_t known);
    /// The library could not look while this request waited in it.
    void doubt(const Topics& topics);
    /// The request was refused, which ends at `place`.
    void refuse(std::uint32_t requestId, const Topics& topics, std::uint64_t place);
    /// Data has left that ends at `place`.
    void tell(std::optional<std::uint32_t> named, const Topics& topics, std::uint64_t place);
    /// The same once more, without a name. `mark`: of its request, if that has one.
    void tellAgain(const Topics& topics, Ms made, std::uint64_t mark);

    /// Whether a request about one of these that was taken since then may get an answer that is
    /// marked.
    bool isDoubtful(const Topics& topics, Ms since) const;

    /// @name Whether a second copy explains an answer to another request than the one that got it
    /// Each explains what one call got, and what the cache tells of that for `cachedMs`.
    /// @{
    bool explains(const Topic& topic, Ms made, std::uint64_t call, Ms cachedMs);
    bool explains(const Topic& topic, std::uint64_t mark, std::uint64_t call);
    /// @}

private:
    struct Account {
        std::deque<std::uint32_t> open;  // requests, oldest first
        std::uint64_t told = 0;          // the place behind the last that came of it
    };
    struct Doubt {
        Ms moment;
        Topic topic;
    };
    struct Copy {
        Topics topics;
        Ms made;
        std::uint64_t mark;  // 0: none
        std::uint64_t call;  // that has got it; 0: none yet
        Ms taken;            // by that call
        Ms end;              // of the connection
    };

    void note(const Topic& topic);
    void forgetOld();
    static bool explains(Copy& copy, const Topic& topic, std::uint64_t call, Ms cachedMs);

    std::map<Topic, Account> accounts_;
    std::deque<Doubt> doubts_;  // oldest first
    std::deque<Copy> copies_;   // oldest first
};

}  // namespace simtime
