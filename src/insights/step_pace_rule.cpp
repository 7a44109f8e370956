#include "insights/step_pace_rule.h"

#include "core/reflection.h"
#include "insights/rounding.h"

#include <algorithm>
#include <utility>

namespace pedvar {

namespace {

StepPaceStatus statusOf(double steps, double lower, double upper) {
    if (upper - lower < StepPaceRule::narrowestBand) return StepPaceStatus::onPace;
    if (steps > upper) return StepPaceStatus::ahead;
    if (steps < lower) return StepPaceStatus::behind;
    return StepPaceStatus::onPace;
}

}  // namespace

Phrase label(StepPaceStatus status, std::string steps) {
    switch (status) {
        case StepPaceStatus::ahead:
            return Phrase("Ahead of usual");
        case StepPaceStatus::onPace:
            return Phrase("On usual pace");
        case StepPaceStatus::behind:
            return Phrase("Behind usual");
        case StepPaceStatus::unavailable:
            break;
    }
    return Phrase("{} steps. Typical day not available yet.", {std::move(steps)});
}

double hourOfDay(const Calendar& calendar, Date moment) {
    const std::chrono::duration<double, std::ratio<3600>> sinceMidnight =
        calendar.localTime(moment) - calendar.day(moment);
    return std::max(0.0, sinceMidnight.count());
}

StepPace StepPaceRule::judge(const std::optional<StepPaceBaseline>& baseline, const PaceCard& card) {
    if (!baseline || card.day != card.today) return {};
    const double lower = valueAt(baseline->lower, card.hour);
    const double upper = valueAt(baseline->upper, card.hour);
    return {statusOf(static_cast<double>(card.steps), lower, upper),
            nearestWhole(valueAt(baseline->median, card.hour))};
}

}  // namespace pedvar
