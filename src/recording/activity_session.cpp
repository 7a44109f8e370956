#include "recording/activity_session.h"

#include <cmath>

namespace pedvar {

bool isImported(const ActivitySession& session) {
    constexpr int contentVersion = 8;  // identifiers of our own recordings are random
    return session.id.version() == contentVersion;
}

std::optional<double> averagePace(double duration, double distance) {
    const double pace = (duration / 60) / (distance / 1000);
    return distance > 0 && std::isfinite(pace) ? std::optional(pace) : std::nullopt;
}

}  // namespace pedvar
