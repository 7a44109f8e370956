/// Hashes that tell contents apart.
#pragma once

#include "core/uuid.h"

#include <bit>
#include <cstdint>
#include <string_view>

namespace pedvar {

/// 128 bits that differ for almost all different inputs. Not against people who look for equal ones.
class ContentHash {
public:
    void add(double value) { addBits(std::bit_cast<std::uint64_t>(value)); }

    void add(std::string_view text) {
        addBits(text.size());
        for (const char character : text) addBits(static_cast<unsigned char>(character));
    }

    /// The identifier that stands for what was added.
    UUID uuid() const {
        UUID::Bytes bytes{};
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            bytes[i] = static_cast<std::uint8_t>((i < 8 ? first_ : second_) >> (i % 8 * 8));
        }
        return UUID::ofContent(bytes);
    }

private:
    void addBits(std::uint64_t bits) {
        first_ = mixed(first_ ^ bits);
        second_ = mixed(second_ + (bits ^ 0x9E3779B97F4A7C15));
    }

    /// The finaliser of SplitMix64.
    static std::uint64_t mixed(std::uint64_t value) {
        value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
        value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
        return (value ^ (value >> 31)) + 0x9E3779B97F4A7C15;
    }

    std::uint64_t first_ = 1;
    std::uint64_t second_ = 2;
};

}  // namespace pedvar
