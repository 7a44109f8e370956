#include "routes/imported_activity.h"

#include "core/content_hash.h"
#include "recording/elevation_calculator.h"
#include "routes/route_summary.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace pedvar {
namespace {

using namespace std::chrono_literals;

constexpr Seconds rounding{1};  // copies have their times rounded

bool isUsualTime(Date time) {
    constexpr Date first = dateOf(std::chrono::sys_days(1y / 1 / 1));
    constexpr Date end = dateOf(std::chrono::sys_days(9999y / 12 / 31));
    return first <= time && time < end;
}

/// The moments of the first and the last of some points.
struct Span {
    Date first = Date::max();
    Date last = Date::min();

    void add(Date time) {
        first = std::min(first, time);
        last = std::max(last, time);
    }
    double seconds() const { return first <= last ? Seconds(last - first).count() : 0; }
};

/// Gathers what a session needs, point by point.
struct Gathering {
    Route route;
    Span whole;
    ContentHash hash;
    ElevationCalculator::StreamingTracker climb;
    bool hasClimb = false;

    /// What lies between two segments was not climbed.
    void startSegment() { climb.reference.reset(); }

    void add(const CLLocation& location, RandomSource& random) {
        const auto point = locationPoint(random.uuid(), location);
        if (!point) return;
        route.push_back(*point);
        whole.add(point->timestamp);
        hash.add(point->latitude);
        hash.add(point->longitude);
        hash.add(point->timestamp.time_since_epoch().count());
        climb.update(location.altitude, location.verticalAccuracy);
        hasClimb = hasClimb || climb.reference;
    }
};

/// Whether both routes begin and end at the same places.
bool shareEnds(const Route& a, const Route& b) {
    constexpr double tolerance = 1e-5;  // degrees, some metre; copies have their coordinates rounded
    const auto isNear = [](const LocationPoint& p, const LocationPoint& q) {
        return std::abs(p.latitude - q.latitude) <= tolerance && std::abs(p.longitude - q.longitude) <= tolerance;
    };
    if (a.isEmpty() || b.isEmpty()) return a.isEmpty() == b.isEmpty();
    return isNear(a[0], b[0]) && isNear(a[a.size() - 1], b[b.size() - 1]);
}

}  // namespace

std::optional<ImportedActivity> importedActivity(const GPXDocument& document, ActivityType type,
                                                 RandomSource& random) {
    Gathering gathering;
    ImportedActivity imported;
    ActivitySession& session = imported.session;
    for (const GPXSegment& segment : document.segments) {
        Span span;
        gathering.startSegment();
        for (std::size_t i = 0; i < segment.points.size(); ++i) {
            const CLLocation& location = segment.points[i];
            if (!segment.hasTime[i] || !isUsualTime(location.timestamp)) {
                ++imported.pointsWithoutTime;
                continue;
            }
            gathering.add(location, random);
            span.add(location.timestamp);
        }
        session.duration += span.seconds();
    }
    const std::size_t timed = gathering.route.size();
    if (timed < 2 || timed < imported.pointsWithoutTime) return std::nullopt;
    session.id = gathering.hash.uuid();
    session.activityType = type;
    session.startTime = gathering.whole.first;
    session.endTime = gathering.whole.last;
    session.distance = summaryOf(document).distance;
    session.calories = static_cast<std::int64_t>(session.distance / 1000 * calorieFactor(type));
    session.averagePace = averagePace(session.duration, session.distance);
    session.route = gathering.route;
    if (gathering.hasClimb) {
        session.elevationGain = gathering.climb.gain;
        session.elevationLoss = gathering.climb.loss;
    }
    return imported;
}

std::optional<UUID> sameActivity(const ActivitySession& session, const SessionHistory& history) {
    const auto isSame = [&](const SavedSession& saved) {
        const ActivitySession& other = saved.session;
        if (other.id == session.id) return true;
        const bool isWithin = other.startTime - rounding <= session.startTime && other.endTime &&
                              *session.endTime <= *other.endTime + rounding;
        if (!isWithin || saved.pointCount != session.route.size()) return false;
        const auto whole = history.wholeSession(other.id);
        return whole && shareEnds(whole->route, session.route);
    };
    const auto& sessions = history.savedSessions();
    const auto found = std::ranges::find_if(sessions, isSame);
    return found == sessions.end() ? std::nullopt : std::optional(found->session.id);
}

}  // namespace pedvar
