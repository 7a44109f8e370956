#include "routes/gpx_values.h"

#include "core/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

namespace pedvar {

namespace {

constexpr std::array<std::string_view, 19> wideSpaces = {
    "\u0085", "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006",
    "\u2007", "\u2008", "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"};

constexpr bool isASCII(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

constexpr bool isNarrowSpace(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

std::size_t spaceAtStart(std::string_view text) {
    if (text.empty()) return 0;
    if (isASCII(text.front())) return isNarrowSpace(text.front());
    const auto space = std::ranges::find_if(wideSpaces, [&](auto wide) { return text.starts_with(wide); });
    return space == wideSpaces.end() ? 0 : space->size();
}

std::size_t spaceAtEnd(std::string_view text) {
    if (text.empty()) return 0;
    if (isASCII(text.back())) return isNarrowSpace(text.back());
    const auto space = std::ranges::find_if(wideSpaces, [&](auto wide) { return text.ends_with(wide); });
    return space == wideSpaces.end() ? 0 : space->size();
}

/// Whether the well-formed character is one that XML does not allow, or that nobody means in a name.
bool isControl(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    if (character.size() == 1) return first < 0x20 || first == 0x7F;
    if (character.size() == 2) return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
    return character == "\uFFFE" || character == "\uFFFF";
}

/// Of a number that is too large for a double or too small: whether it is too small.
bool isNearZero(std::string_view number) {
    const std::size_t exponent = number.find_first_of("eE");
    if (exponent != std::string_view::npos) return number.substr(exponent + 1).starts_with('-');
    return number.starts_with('0') || number.starts_with('.');
}

std::string_view entityFor(std::string_view character) {
    switch (character[0]) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&apos;";
        default:
            return character;
    }
}

}  // namespace

std::optional<double> parseGPXNumber(std::string_view text) {
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    const bool isNumeral = !text.empty() && (text[0] == '.' || (text[0] >= '0' && text[0] <= '9'));
    if (!isNumeral) return std::nullopt;
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc::invalid_argument || stop != end) return std::nullopt;
    if (error == std::errc::result_out_of_range && !isNearZero(text)) return std::nullopt;
    return isNegative ? -value : value;
}

std::string_view trimmed(std::string_view text) {
    while (const std::size_t length = spaceAtStart(text)) text.remove_prefix(length);
    while (const std::size_t length = spaceAtEnd(text)) text.remove_suffix(length);
    return text;
}

std::string escaped(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const std::string_view character = text.substr(0, length);
        if (length == 0) {
            result += replacementCharacter;
        } else if (!isControl(character)) {
            result += entityFor(character);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

}  // namespace pedvar
