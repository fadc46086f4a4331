#include "cinterface/TroubleCodes.h"

#include <utility>

namespace cinterface {

Result resultOf(std::vector<QorControlFacade::DtcDescription> codes) {
    Result result;
    result.dtcs.emplace();
    result.texts.emplace();
    result.dtcs->reserve(codes.size());
    result.texts->reserve(codes.size());
    for (auto& code : codes) {
        result.dtcs->push_back({code.code, code.status});
        result.texts->push_back({std::move(code.text1), std::move(code.text2),
                                 std::move(code.text3), std::move(code.text4)});
    }
    return result;
}

}  // namespace cinterface
