/// Numbers and names as GPX documents hold them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pedvar {

/// A number that is the whole text: `[+-]digits[.digits][exponent]`, "5." and ".5" included. None for everything
/// else: words, hexadecimal, spaces, and what is too large for a double.
std::optional<double> parseGPXNumber(std::string_view text);

/// Without the white space, as Unicode defines it, at both ends.
std::string_view trimmed(std::string_view text);

/// Fit to stand in XML: with entities for what is markup there, without control characters, and U+FFFD for bytes
/// that are no UTF-8.
std::string escaped(std::string_view text);

}  // namespace pedvar
