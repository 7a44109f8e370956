/// What the messages of one connection say of its receivers.
#pragma once

#include "linux/location/gpsd_location_manager.h"

#include <chrono>
#include <optional>
#include <string>

namespace pedvar {

/// Is told every message with the moment of its arrival, silence too.
class ReceiverWatch {
public:
    using Moment = std::chrono::steady_clock::time_point;

    ReceiverWatch(const GpsdPatience& patience, Moment start) : patience_(patience), heard_(start) {}

    /// None while it cannot be told yet.
    std::optional<ReceiverCondition::State> after(const GpsdMessage& message, Moment now);
    /// Whether it comes from the receiver that is listened to: two in one pocket stand some metres apart, and
    /// going from one to the other and back is no walk.
    bool isChosen(const GpsdReport& report) const { return report.receiver == chosen_; }
    bool isDead(Moment now) const { return now - heard_ > patience_.dead; }

private:
    bool hasFix(Moment now) const { return lastFix_ && now - *lastFix_ <= patience_.silence; }

    GpsdPatience patience_;
    bool hasReceiver_ = true;  // until gpsd has told
    bool hasReported_ = false;
    Moment heard_;
    std::string chosen_;
    std::optional<Moment> lastFix_;  // of the chosen one
};

}  // namespace pedvar
