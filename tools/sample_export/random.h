/// Chance that is the same on every machine.
#pragma once

#include <cstdint>

namespace pedvar::sample {

/// Marsaglia's xorshift with a multiplied output. Integers only: no machine rounds them differently. Compilers
/// evaluate arguments and operands in different orders, so an expression draws one number at most.
class Random {
public:
    /// Different seeds and streams give numbers that have nothing to do with each other.
    explicit Random(std::uint64_t seed, std::uint64_t stream = 0)
        : state_(mixed(seed + 0x9e3779b97f4a7c15 * (stream + 1)) | 1) {}

    /// `lowest` to `highest`, both included, evenly.
    int within(int lowest, int highest) {
        const auto count = static_cast<std::uint64_t>(highest) - static_cast<std::uint64_t>(lowest) + 1;
        return lowest + static_cast<int>(((next() >> 32) * count) >> 32);
    }

    bool happens(int percent) { return within(1, 100) <= percent; }

private:
    std::uint64_t next() {
        state_ ^= state_ >> 12;
        state_ ^= state_ << 25;
        state_ ^= state_ >> 27;
        return state_ * 0x2545f4914f6cdd1d;
    }

    static std::uint64_t mixed(std::uint64_t bits) {
        bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9;
        bits = (bits ^ (bits >> 27)) * 0x94d049bb133111eb;
        return bits ^ (bits >> 31);
    }

    std::uint64_t state_;
};

}  // namespace pedvar::sample
