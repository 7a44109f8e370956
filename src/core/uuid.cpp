#include "core/uuid.h"

namespace pedvar {

namespace {

constexpr std::size_t textLength = 36;

constexpr bool isDash(std::size_t position) {
    return position == 8 || position == 13 || position == 18 || position == 23;
}

constexpr std::optional<std::uint8_t> hexDigit(char character) {
    if ('0' <= character && character <= '9') return static_cast<std::uint8_t>(character - '0');
    if ('A' <= character && character <= 'F') return static_cast<std::uint8_t>(character - 'A' + 10);
    if ('a' <= character && character <= 'f') return static_cast<std::uint8_t>(character - 'a' + 10);
    return std::nullopt;
}

/// With the bits in place that tell the version and the variant of RFC 9562.
UUID::Bytes marked(UUID::Bytes bytes, int version) {
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0f) | (version << 4));
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3f) | 0x80);
    return bytes;
}

}  // namespace

UUID UUID::random(Bytes bytes) {
    return UUID(marked(bytes, 4));
}

UUID UUID::ofContent(Bytes hash) {
    return UUID(marked(hash, 8));
}

std::optional<UUID> UUID::fromText(std::string_view text) {
    if (text.size() != textLength) return std::nullopt;
    Bytes bytes{};
    std::size_t digits = 0;
    for (std::size_t i = 0; i < textLength; ++i) {
        if (isDash(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        const auto digit = hexDigit(text[i]);
        if (!digit) return std::nullopt;
        std::uint8_t& byte = bytes[digits++ / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | *digit);
    }
    return UUID(bytes);
}

std::string UUID::text() const {
    constexpr std::string_view hexDigits = "0123456789ABCDEF";
    std::string text(textLength, '-');
    std::size_t position = 0;
    for (const std::uint8_t byte : bytes_) {
        if (isDash(position)) ++position;
        text[position++] = hexDigits[byte >> 4];
        text[position++] = hexDigits[byte & 0xf];
    }
    return text;
}

}  // namespace pedvar
