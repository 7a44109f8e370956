#include "core/utf8.h"

#include <algorithm>

namespace pedvar {

namespace {

/// What may follow a first byte. The bounds of the second byte keep out longer forms than needed, surrogates and
/// what lies beyond U+10FFFF.
struct Continuation {
    std::size_t length;
    unsigned char lowestSecond = 0x80;
    unsigned char highestSecond = 0xBF;
};

Continuation continuationOf(unsigned char first) {
    if (first < 0x80) return {1};
    if (first < 0xC2) return {0};
    if (first < 0xE0) return {2};
    if (first == 0xE0) return {3, 0xA0};
    if (first == 0xED) return {3, 0x80, 0x9F};
    if (first < 0xF0) return {3};
    if (first == 0xF0) return {4, 0x90};
    if (first < 0xF4) return {4};
    if (first == 0xF4) return {4, 0x80, 0x8F};
    return {0};
}

}  // namespace

std::size_t characterLength(std::string_view text) {
    if (text.empty()) return 0;
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const Continuation expected = continuationOf(byte(0));
    if (expected.length < 2) return expected.length;
    if (text.size() < expected.length) return 0;
    if (byte(1) < expected.lowestSecond || byte(1) > expected.highestSecond) return 0;
    const bool isWhole = std::ranges::all_of(text.substr(2, expected.length - 2), [](char rest) {
        return (static_cast<unsigned char>(rest) & 0xC0) == 0x80;
    });
    return isWhole ? expected.length : 0;
}

}  // namespace pedvar
