#include "TroubleCodes.h"

#include <fmt/format.h>

#include "JsonText.h"

namespace qorctl {

TextTable tableOf(const std::vector<QorControlFacade::DtcDescription>& codes) {
    TextTable table({{"code"}, {"status"}, {"text 1"}, {"text 2"}, {"text 3"}, {"text 4"}});
    for (const auto& code : codes)
        table.add({fmt::format("0x{:04X}", code.code), fmt::format("0x{:02X}", code.status),
                   code.text1, code.text2, code.text3, code.text4});
    return table;
}

nlohmann::json jsonOf(const std::vector<QorControlFacade::DtcDescription>& codes) {
    nlohmann::json array = nlohmann::json::array();
    for (const auto& code : codes)
        array.push_back(
            {{"code", code.code},
             {"status", code.status},
             {"texts",
              {utf8Of(code.text1), utf8Of(code.text2), utf8Of(code.text3), utf8Of(code.text4)}}});
    return array;
}

}  // namespace qorctl
