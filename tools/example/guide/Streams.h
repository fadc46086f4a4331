#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QorControlFacade.h"

/// The examples of the host guide: streams and the life of their queues.
namespace guide {

// [queue types]
using Values = std::vector<QorControlFacade::ParamValue>;
using ValueQueue = ThreadSafeQueue<Values>;
using Codes = std::vector<QorControlFacade::DtcDescription>;
using CodeQueue = ThreadSafeQueue<Codes>;

/// What a pop from a queue of trouble codes says.
enum class Watched { codes, noCodes, readingFails, nothingYet };
// [/queue types]

bool awaitAbove(const QorControlFacade& qor, ValueQueue& queue, const std::string& name,
                double limit, unsigned int patienceMs);
bool endValues(const QorControlFacade& qor, std::unique_ptr<ValueQueue>& queue);
Watched nextCodes(CodeQueue& queue, unsigned int waitMs, Codes& codes);
bool watchCodes(const QorControlFacade& qor, CodeQueue& queue);
bool endCodes(const QorControlFacade& qor, std::unique_ptr<CodeQueue>& queue);
void endAll(std::unique_ptr<QorControlFacade> qor, std::unique_ptr<ValueQueue> values);

}  // namespace guide
