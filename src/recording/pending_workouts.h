/// What is still to be written to the health store.
#pragma once

#include "core/uuid.h"
#include "platform/document_parts.h"

#include <vector>

namespace pedvar {

/// Keeps the sessions that have joined the history and whose workouts are not in the health store yet. A session
/// is noted in the transaction that adds it to the history; a workout is written under its session's identifier,
/// so that writing it again after a kill adds nothing.
class PendingWorkouts {
public:
    /// Keeps the reference.
    explicit PendingWorkouts(DocumentParts& documents) : documents_(documents) {}

    /// Those noted, oldest first. One that is no longer in the history needs no workout any more.
    std::vector<UUID> sessions() const;

    /// What notes a session, as part of a transaction.
    static std::vector<PartsChange> noting(UUID session);
    /// To be called once the workout is in the health store.
    DefaultsResult remove(UUID session);

private:
    DocumentParts& documents_;
};

inline constexpr const char* pendingWorkoutsKey = "pendingWorkouts";

}  // namespace pedvar
