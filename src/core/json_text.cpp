#include "core/json_text.h"

#include "core/utf8.h"

#include <array>

namespace pedvar {

namespace {

/// Whether a byte is an ASCII character that stands for itself.
constexpr auto isPlain = [] {
    std::array<bool, 256> table{};
    for (std::size_t byte = 0x20; byte < 0x80; ++byte) table[byte] = byte != '"' && byte != '\\';
    return table;
}();

}  // namespace

std::size_t plainLength(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size()) {
        const auto byte = static_cast<unsigned char>(text[length]);
        const std::size_t character = isPlain[byte] ? 1 : byte < 0x80 ? 0 : characterLength(text.substr(length));
        if (character == 0) break;
        length += character;
    }
    return length;
}

}  // namespace pedvar
