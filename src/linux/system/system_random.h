/// The kernel's random numbers.
#pragma once

#include "platform/random_source.h"

#include <array>
#include <cstddef>

namespace pedvar {

/// Asks the kernel for 16 UUIDs at once, as much as always comes in one piece.
class SystemRandom : public RandomSource {
public:
    UUID::Bytes bytes() override;

private:
    std::array<UUID::Bytes, 16> pool_{};
    std::size_t left_ = 0;  // of the pool, from its start
};

}  // namespace pedvar
