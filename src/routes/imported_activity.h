/// Activities that other programs have recorded.
#pragma once

#include "platform/random_source.h"
#include "recording/session_history.h"
#include "routes/gpx_parser.h"

#include <cstddef>
#include <optional>

namespace pedvar {

struct ImportedActivity {
    ActivitySession session;
    std::size_t pointsWithoutTime = 0;  // left out of its route
};

/// The activity that a GPX document tells of. Its identifier is made from when and where it was, so that the same
/// track is the same activity each time. It has no steps, and lasts as long as its segments together. None when
/// fewer than two of its points have a time of the years 1 to 9999, or fewer than half of them: then nothing is
/// known of how it was gone.
std::optional<ImportedActivity> importedActivity(const GPXDocument& document, ActivityType type,
                                                 RandomSource& random);

/// The session of the history that is the same activity: the same track imported before, or our own recording of
/// which it is an exported copy.
std::optional<UUID> sameActivity(const ActivitySession& session, const SessionHistory& history);

}  // namespace pedvar
