/// What time it is.
#pragma once

#include "core/date.h"

namespace pedvar {

class Clock {
public:
    virtual ~Clock() = default;

    /// The present moment. From any thread.
    virtual Date now() const = 0;
};

}  // namespace pedvar
