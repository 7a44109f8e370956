/// The machine's clock, and one that stands still.
#pragma once

#include "platform/clock.h"

namespace pedvar {

class SystemClock : public Clock {
public:
    Date now() const override {
        const auto now = std::chrono::system_clock::now();
        return dateOf(std::chrono::floor<std::chrono::milliseconds>(now));
    }
};

/// Always the same moment: for looking at another one than the present.
class FixedClock : public Clock {
public:
    explicit FixedClock(Date now) : now_(now) {}

    Date now() const override { return now_; }

private:
    Date now_;
};

}  // namespace pedvar
