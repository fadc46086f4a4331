#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "QorControlFacade.h"

/// The examples of the host guide: trouble codes, KWP, CAN.
namespace guide {

bool codesAreGone(const QorControlFacade& qor);
bool presentCodes(const QorControlFacade& qor, std::vector<std::string>& codes);
// [Exchange]
enum class Exchange { noAnswer, refused, answered };
// [/Exchange]
Exchange readIdentification(const QorControlFacade& qor, unsigned char which, std::string& bytes);
bool askForCertain(const QorControlFacade& qor, QorControlFacade::KwpCommand& kwp, int tries);
bool readCan(const QorControlFacade& qor, unsigned int canId, int& value);
bool sendCan(const QorControlFacade& qor, unsigned int canId, std::uint16_t value);

}  // namespace guide
