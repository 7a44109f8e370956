/// Looking for bytes eight at a time.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace pedvar {

namespace byte_scan {

inline constexpr std::uint64_t ones = 0x0101010101010101;
inline constexpr std::uint64_t highBits = 0x8080808080808080;

/// A word whose lowest set bit lies in the first byte of `word` below `limit` (at most 128); 0 when there is none.
constexpr std::uint64_t bytesBelow(std::uint64_t word, unsigned char limit) {
    return (word - ones * limit) & ~word & highBits;
}

constexpr std::uint64_t bytesEqual(std::uint64_t word, char byte) {
    return bytesBelow(word ^ (ones * static_cast<unsigned char>(byte)), 1);
}

}  // namespace byte_scan

/// The first byte in [p, end) at which the plain part of an attribute's value stops: its quote, '&', '<' or white
/// space other than a blank; `end` when there is none.
inline const char* findValueStop(const char* p, const char* end, char quote) {
    if constexpr (std::endian::native == std::endian::little) {
        for (; end - p >= 8; p += 8) {
            std::uint64_t word;
            std::memcpy(&word, p, sizeof word);
            const std::uint64_t stops = byte_scan::bytesEqual(word, quote) | byte_scan::bytesEqual(word, '&') |
                                        byte_scan::bytesEqual(word, '<') | byte_scan::bytesBelow(word, ' ');
            if (stops != 0) return p + std::countr_zero(stops) / 8;
        }
    }
    while (p != end && *p != quote && *p != '&' && *p != '<' && static_cast<unsigned char>(*p) >= ' ') ++p;
    return p;
}

}  // namespace pedvar
