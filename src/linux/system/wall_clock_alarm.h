/// Waking at a time of the clock.
#pragma once

#include "core/date.h"
#include "linux/system/readiness.h"

#include <functional>

namespace pedvar {

/// Calls its handler when the machine's clock shows a moment, right after a sleep of the machine that lasted
/// beyond it, and when somebody sets the clock.
class WallClockAlarm {
public:
    /// The handler is called on the main executor.
    WallClockAlarm(Readiness& readiness, std::move_only_function<void()> handler);
    WallClockAlarm(const WallClockAlarm&) = delete;
    WallClockAlarm& operator=(const WallClockAlarm&) = delete;
    ~WallClockAlarm();

    /// In place of the moment that was set before.
    void set(Date moment);

private:
    int descriptor_;
    std::move_only_function<void()> handler_;
    Subscription readable_;
};

}  // namespace pedvar
