/// Chance.
#pragma once

#include "core/uuid.h"

namespace pedvar {

class RandomSource {
public:
    virtual ~RandomSource() = default;

    /// 16 random bytes. From the main thread.
    virtual UUID::Bytes bytes() = 0;

    UUID uuid() { return UUID::random(bytes()); }
};

}  // namespace pedvar
