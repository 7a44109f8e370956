#include "recording/in_progress_state.h"

namespace pedvar {

ActivitySession retired(const InProgressState& state) {
    ActivitySession session = state.session;
    session.endTime = state.checkpointDate;
    session.isActive = false;
    session.steps = state.currentSteps;
    session.distance = state.currentDistance;
    session.duration = state.currentDuration;
    session.calories = state.currentCalories;
    session.route = state.routePoints;
    session.elevationGain = state.elevationGain;
    session.elevationLoss = state.elevationLoss;
    session.averagePace = averagePace(session.duration, session.distance);
    return session;
}

}  // namespace pedvar
