#pragma once

#include <memory>

#include "client/ClientExternalOperating.h"
#include "Target.h"

namespace fuzz {

/// A client with nothing around it but this transport.
std::unique_ptr<ClientExternalOperating> makeClient(
    const ClientExternalOperating::MakeTransport& makeTransport);

/// One operation of the client, whichever the input says. It must end within its own time.
void callClient(ClientExternalOperating& client, Input& input);

/// What this program holds of the heap now; 0 where the sanitizer does not count it.
std::size_t heapBytes();

}  // namespace fuzz
