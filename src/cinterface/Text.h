#pragma once

#include <optional>
#include <string>

/// The one place where texts change between the border's UTF-8 and the ANSI code page, in which the
/// facade, QOR and its files have them.
namespace cinterface::text {

/// A text with a character that the code page does not have, or that is no valid UTF-8, gives
/// nothing: QOR would get another text than the host's.
std::optional<std::string> ansiOf(const std::string& utf8);

/// Strict as well: nothing if the bytes are none of the code page.
std::optional<std::string> utf8Of(const std::string& ansi);

/// For people, who would rather see a text with a replaced character than none.
std::string shownUtf8Of(const std::string& ansi);

}  // namespace cinterface::text
