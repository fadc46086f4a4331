#include "serve/streams/Register.h"

namespace qorctl::serve {

Methods streamMethods(const std::string& kind, const std::string& about, Params params,
                      Method::Way way, StartStream start, StopStream stop) {
    const Param number = whole("stream", "Its number");
    Method starting{"start" + kind,
                    "Begins a stream of " + about,
                    std::move(params),
                    {number},
                    way,
                    Method::Effect::looks,
                    [start = std::move(start)](const nlohmann::json& given,
                                               const std::shared_ptr<Client>& client) {
                        return nlohmann::json{{"stream", start(given, client)}};
                    }};
    Method stopping{"stop" + kind,
                    "Ends such a stream of this client",
                    {number},
                    {},
                    Method::Way::atOnce,
                    Method::Effect::looks,
                    [stop = std::move(stop)](const nlohmann::json& given,
                                             const std::shared_ptr<Client>& client) {
                        stop(wholeOf(given["stream"]), *client);
                        return nlohmann::json::object();
                    }};
    starting.isForLasting = stopping.isForLasting = true;
    return {std::move(starting), std::move(stopping)};
}

}  // namespace qorctl::serve
