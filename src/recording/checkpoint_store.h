/// The recording that is not finished.
#pragma once

#include "recording/session_history.h"

#include <cstddef>
#include <expected>
#include <optional>
#include <vector>

namespace pedvar {

inline constexpr Seconds checkpointMinInterval{5};
inline constexpr Seconds maxRecoveryAge{43'200};  // twelve hours

enum class CheckpointTiming { whenDue, forced };

/// Keeps the checkpoint of the running recording and ends it by moving the session to the history. A checkpoint
/// writes the points that are new since the last one, once. Lives on the main executor, as the only one that
/// records for this person.
class CheckpointStore {
public:
    /// Keeps the references.
    CheckpointStore(DocumentParts& documents, SessionHistory& history)
        : documents_(documents), history_(history) {}

    /// Writes the checkpoint; unless it is forced, only when the last one is 5 seconds old or the clock has been
    /// set back meanwhile.
    DefaultsResult save(const InProgressState& state, CheckpointTiming timing);

    /// Removes the checkpoint and its route.
    DefaultsResult clear();

    /// To be called once, before anything is saved. Yields the recording that is to go on, in the state of its
    /// checkpoint; points of its route that cannot be read are missing. A checkpoint that is older than
    /// `maxRecoveryAge` becomes a finished session, and one of no use is removed; then there is nothing to go on
    /// with.
    std::expected<std::optional<InProgressState>, DefaultsError> restore(Date now);

    /// In one transaction: adds the session to the history, notes that its workout is still to be written to the
    /// health store, and removes the checkpoint. When that fails, everything is as before.
    DefaultsResult finish(const ActivitySession& session);

private:
    /// The list that the checkpoint in the store refers to. Without a count its texts are not the points of the
    /// route one by one, and no points can be appended to them.
    struct StoredRoute {
        UUID session;
        std::optional<std::size_t> pointCount;
    };

    std::optional<InProgressState> read();
    /// How many points of the session's route need not be written again.
    std::size_t storedPoints(UUID session, const Route& route) const;
    /// Removes what is in the store and is not the beginning of that route.
    std::vector<PartsChange> removals(UUID session, const Route& route) const;

    DocumentParts& documents_;
    SessionHistory& history_;
    std::optional<Date> lastCheckpointDate_;
    std::optional<StoredRoute> stored_;
};

}  // namespace pedvar
