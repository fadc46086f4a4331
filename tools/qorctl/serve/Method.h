#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "qorcontrol/Outcome.h"
#include "QorControlFacade.h"
#include "serve/Client.h"
#include "serve/rpc/Param.h"

namespace qorctl::serve {

/// Something that a client can ask for.
struct Method {
    /// Whether it asks the library's agent, and so waits for its turn, or is answered at once.
    enum class Way { atOnce, inTurn };
    /// Whether a server that may only look carries it out.
    enum class Effect { looks, changes };
    /// Given the checked arguments; throws a Failure. One in turn runs on the server's one thread
    /// for the library.
    using Run =
        std::function<nlohmann::json(const nlohmann::json&, const std::shared_ptr<Client>&)>;

    std::string name;
    std::string about;
    Params params;
    Params result;  ///< the fields of the object that it gives
    Way way = Way::inTurn;
    Effect effect = Effect::looks;
    Run run;
    /// What `run` finds as "whenAsked" in the arguments: noted before it waits for its turn.
    nlohmann::json (*noteWhenAsked)(const Client&) = nullptr;
    bool isForLasting = false;  ///< of no use to a client that has just this one request
    bool letsEcuGo = false;     ///< QOR gives up direct control for it
};
using Methods = std::vector<Method>;

/// Throws what the library tells of the thread's last call, unless it has worked.
void mustHaveWorked(bool worked);
[[noreturn]] void failAs(const qorcontrol::Outcome& told);

/// What is said of the last call besides: whether its answer may belong to an earlier request.
nlohmann::json withWarning(nlohmann::json result);

/// A text of a request in the ANSI code page; throws a Failure if that lacks one of its characters.
std::string ansiOf(const nlohmann::json& text);

/// @name The operations of the library, by subject
/// @{
Methods connectionMethods(QorControlFacade& facade);
Methods parameterMethods(const QorControlFacade& facade);
Methods diagnosticMethods(const QorControlFacade& facade);
/// @}

}  // namespace qorctl::serve
