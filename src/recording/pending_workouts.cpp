#include "recording/pending_workouts.h"

#include "core/record_reader.h"
#include "recording/session_documents.h"

#include <algorithm>

namespace pedvar {

std::vector<UUID> PendingWorkouts::sessions() const {
    std::vector<UUID> sessions;
    for (const Part& part : documents_.list(pendingWorkoutsKey)) {
        if (const auto session = readJson<UUID>(part.text)) sessions.push_back(*session);
    }
    std::ranges::reverse(sessions);
    return sessions;
}

std::vector<PartsChange> PendingWorkouts::noting(UUID session) {
    return {arrayFrame(pendingWorkoutsKey),
            AddPart{pendingWorkoutsKey, std::nullopt, encodeJson(session).value()}};
}

DefaultsResult PendingWorkouts::remove(UUID session) {
    std::vector<PartsChange> changes;
    for (const Part& part : documents_.list(pendingWorkoutsKey)) {
        if (readJson<UUID>(part.text) != session) continue;
        changes.push_back(ReplacePart{pendingWorkoutsKey, part.position, part.text, std::nullopt});
    }
    return changes.empty() ? DefaultsResult() : documents_.write(changes);
}

}  // namespace pedvar
