#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qorcontrol/Streams.h"
#include "QorControlFacade.h"

/// The examples of the host guide: streams and the life of their queues.
namespace guide {

// [queue types]
using qorcontrol::ValueStream;
using CodeStream = qorcontrol::TroubleCodeStream;
using Values = ValueStream::Values;
using ValueQueue = ThreadSafeQueue<Values>;
using Codes = CodeStream::Codes;

/// What a pop from a stream of trouble codes says.
enum class Watched { codes, noCodes, readingFails, nothingYet };
// [/queue types]

bool awaitAbove(const QorControlFacade& qor, const std::string& name, double limit,
                unsigned int patienceMs, const EolLog* log);
void beginValues(const QorControlFacade& qor, const std::string& name, ValueQueue& queue);
bool endValues(const QorControlFacade& qor, std::unique_ptr<ValueQueue>& queue);
Watched nextCodes(CodeStream& stream, unsigned int waitMs, Codes& codes);
std::unique_ptr<CodeStream> watchCodes(const QorControlFacade& qor, const EolLog* log);
bool endCodes(CodeStream& stream);
void endAll(std::unique_ptr<QorControlFacade> qor, std::unique_ptr<ValueQueue> values);

}  // namespace guide
