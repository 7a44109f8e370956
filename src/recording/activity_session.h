/// A recorded walk, run, hike or ride.
#pragma once

#include "core/record.h"
#include "core/uuid.h"
#include "recording/activity_type.h"
#include "recording/route.h"

#include <cstdint>
#include <optional>

namespace pedvar {

struct ActivitySession {
    UUID id;
    ActivityType activityType = ActivityType::walk;
    Date startTime;
    std::optional<Date> endTime;  // absent while it runs
    bool isActive = false;        // whether it is being recorded
    std::int64_t steps = 0;
    double distance = 0;                // metres
    double duration = 0;                // seconds without pauses
    std::int64_t calories = 0;          // kilocalories
    std::optional<double> averagePace;  // minutes per kilometre
    Route route;
    std::optional<double> elevationGain;  // metres
    std::optional<double> elevationLoss;  // metres

    using Fields = FieldList<&ActivitySession::id, &ActivitySession::activityType, &ActivitySession::startTime,
                             &ActivitySession::endTime, &ActivitySession::isActive, &ActivitySession::steps,
                             &ActivitySession::distance, &ActivitySession::duration, &ActivitySession::calories,
                             &ActivitySession::averagePace, &ActivitySession::route,
                             &ActivitySession::elevationGain, &ActivitySession::elevationLoss>;
    bool operator==(const ActivitySession&) const = default;
};
static_assert(isComplete<ActivitySession>);

/// Whether the session came from another program.
bool isImported(const ActivitySession& session);

/// Minutes per kilometre of `duration` seconds over `distance` metres; none without distance, or where it is so
/// short that there is no such number.
std::optional<double> averagePace(double duration, double distance);

}  // namespace pedvar
