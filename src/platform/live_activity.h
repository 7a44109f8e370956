/// The recording on surfaces that are seen while the program is not.
#pragma once

#include "core/date.h"

#include <cstdint>
#include <string>

namespace pedvar {

/// What is shown.
struct LiveActivityState {
    std::string activityType;  // as it is stored: "walk"
    Date startTime;
    Seconds duration{};
    std::int64_t steps = 0;
    double distance = 0;  // metres
    double pace = 0;      // minutes per kilometre
    std::int64_t calories = 0;
    bool isPaused = false;
    bool operator==(const LiveActivityState&) const = default;
};

/// To be called on the main executor.
class LiveActivity {
public:
    virtual ~LiveActivity() = default;

    virtual void start(const LiveActivityState& state) = 0;
    virtual void update(const LiveActivityState& state) = 0;
    virtual void end() = 0;
};

}  // namespace pedvar
