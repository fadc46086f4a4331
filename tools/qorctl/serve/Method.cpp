#include "serve/Method.h"

#include <windows.h>

#include "CauseJson.h"
#include "JsonText.h"
#include "qorcontrol/Outcome.h"
#include "serve/rpc/Failure.h"

namespace qorctl::serve {
namespace {

constexpr unsigned int utf8 = CP_UTF8;

std::wstring wideOf(const std::string& text) {
    const int length = static_cast<int>(text.size());
    const int wanted =
        MultiByteToWideChar(utf8, MB_ERR_INVALID_CHARS, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(wanted), L'\0');
    MultiByteToWideChar(utf8, MB_ERR_INVALID_CHARS, text.data(), length, wide.data(), wanted);
    return wide;
}

}  // namespace

void mustHaveWorked(bool worked) {
    if (!worked) failAs(qorcontrol::lastOutcome());
}

void failAs(const qorcontrol::Outcome& told) {
    nlohmann::json data = jsonOf(told);
    if (data.is_object()) data["elapsedMs"] = told.elapsedMs;
    throw Failure{RpcCode::failed, utf8Of(told.sentence), std::move(data)};
}

nlohmann::json withWarning(nlohmann::json result) {
    if (qorcontrol::lastOutcome().mayBelongToEarlier) result["mayBelongToEarlier"] = true;
    return result;
}

std::string ansiOf(const nlohmann::json& text) {
    const auto& given = text.get_ref<const std::string&>();
    if (given.empty()) return given;
    const std::wstring wide = wideOf(given);
    const int length = static_cast<int>(wide.size());
    BOOL isReplaced = FALSE;
    // Where the code page is UTF-8 itself the system knows no replacement.
    BOOL* const replaced = GetACP() == utf8 ? nullptr : &isReplaced;
    const int wanted =
        WideCharToMultiByte(CP_ACP, 0, wide.data(), length, nullptr, 0, nullptr, replaced);
    std::string ansi(static_cast<std::size_t>(wanted), '\0');
    WideCharToMultiByte(CP_ACP, 0, wide.data(), length, ansi.data(), wanted, nullptr, replaced);
    if (isReplaced != FALSE)
        refuseParams("the ANSI code page, in which QOR has its texts, lacks a character of \"" +
                     given + "\"");
    return ansi;
}

}  // namespace qorctl::serve
