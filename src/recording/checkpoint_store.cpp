#include "recording/checkpoint_store.h"

#include "core/record_reader.h"
#include "recording/pending_workouts.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace pedvar {

DefaultsResult CheckpointStore::save(const InProgressState& state, CheckpointTiming timing) {
    if (timing == CheckpointTiming::whenDue && lastCheckpointDate_) {
        const Seconds sinceLast = state.checkpointDate - *lastCheckpointDate_;
        if (Seconds{0} <= sinceLast && sinceLast < checkpointMinInterval) return {};
    }
    const UUID session = state.session.id;
    const Route& route = state.routePoints;
    const auto text = checkpointText(state);
    if (!text)
        return std::unexpected(DefaultsError{Phrase("The recording holds a number that cannot be stored.")});

    std::vector<PartsChange> changes = removals(session, route);
    std::ranges::move(routeAdditions(session, route, storedPoints(session, route)), std::back_inserter(changes));
    changes.push_back(SetFrame{inProgressKey, text});
    if (auto written = documents_.write(changes); !written) {
        lastCheckpointDate_.reset();  // the next one is due
        return written;
    }
    stored_ = {session, route.size()};
    lastCheckpointDate_ = state.checkpointDate;
    return {};
}

DefaultsResult CheckpointStore::clear() {
    const auto frame = documents_.frame(inProgressKey);
    std::vector<PartsChange> changes{SetFrame{inProgressKey, std::nullopt}};
    for (const Hole& hole : takeHolesOut(frame.value_or("")).holes) {
        const auto session = UUID::fromText(hole.list);
        if (session && !history_.contains(*session)) changes.push_back(RemoveList{hole.list});
    }
    const bool isThere = frame || documents_.defaults().value(inProgressKey);
    if (isThere) {
        if (auto written = documents_.write(changes); !written) return written;
    }
    stored_.reset();
    lastCheckpointDate_.reset();
    return {};
}

std::expected<std::optional<InProgressState>, DefaultsError> CheckpointStore::restore(Date now) {
    auto state = read();
    DefaultsResult ended;
    if (!state || !state->session.isActive || history_.contains(state->session.id)) {
        ended = clear();
    } else if (now - state->checkpointDate > maxRecoveryAge) {
        ended = finish(retired(*state));
    } else {
        return state;
    }
    if (!ended) return std::unexpected(ended.error());
    return std::nullopt;
}

DefaultsResult CheckpointStore::finish(const ActivitySession& session) {
    std::vector<PartsChange> changes{SetFrame{inProgressKey, std::nullopt}};
    if (!history_.contains(session.id)) {
        std::ranges::move(removals(session.id, session.route), std::back_inserter(changes));
        std::ranges::move(PendingWorkouts::noting(session.id), std::back_inserter(changes));
    }
    const std::size_t storedPoints = this->storedPoints(session.id, session.route);
    if (auto added = history_.add(session, storedPoints, std::move(changes)); !added) return added;
    stored_.reset();
    lastCheckpointDate_.reset();
    return {};
}

std::optional<InProgressState> CheckpointStore::read() {
    const auto frame = documents_.frame(inProgressKey);
    const auto whole = frame ? std::nullopt : documents_.defaults().data(inProgressKey);
    const TextAroundHoles around = takeHolesOut(frame ? *frame : whole.value_or(Data{}).bytes);
    auto state = readJson<InProgressState>(around.text);
    if (state && !around.holes.empty()) {
        const auto parts = documents_.list(routeList(state->session.id));
        state->routePoints = routeIn(parts);
        const std::size_t count = state->routePoints.size();
        const bool isIntact = std::cmp_equal(around.holes.back().count, count) &&
                              (parts.empty() || std::cmp_less(parts.back().position, count));
        stored_ = {state->session.id, isIntact ? std::optional(count) : std::nullopt};
    }
    if (state) state->session.route = state->routePoints;
    return state;
}

std::size_t CheckpointStore::storedPoints(UUID session, const Route& route) const {
    const bool isBeginning = stored_ && stored_->session == session && stored_->pointCount <= route.size();
    return isBeginning ? stored_->pointCount.value_or(0) : 0;
}

std::vector<PartsChange> CheckpointStore::removals(UUID session, const Route& route) const {
    if (!stored_ || stored_->pointCount == 0) return {};
    if (storedPoints(session, route) > 0) return {};
    return {RemoveList{routeList(stored_->session)}};
}

}  // namespace pedvar
