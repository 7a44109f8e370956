/// Standing still without having said so.
#pragma once

#include "core/date.h"

#include <optional>

namespace pedvar {

/// The person's choice.
enum class AutoPauseMode { off, on };

/// Notices when a person stands, and when he goes on.
class AutoPause {
public:
    /// Whether a way that was gone at `speed`, in metres per second, counts.
    bool counts(double speed, AutoPauseMode mode, Date now);

    /// Whether the person stands.
    bool isPaused() const { return autoPauseStartDate_.has_value(); }
    /// Of finished pauses.
    Seconds totalAutoPausedTime() const { return totalAutoPausedTime_; }

private:
    void goOn(Date now);

    int consecutiveStationaryReadings_ = 0;
    std::optional<Date> autoPauseStartDate_;
    Seconds totalAutoPausedTime_{};
};

}  // namespace pedvar
