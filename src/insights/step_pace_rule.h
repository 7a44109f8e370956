/// Whether today goes like a usual day.
#pragma once

#include "insights/step_pace_baseline.h"
#include "platform/phrase.h"

#include <cstdint>
#include <optional>
#include <string>

namespace pedvar {

enum class StepPaceStatus { ahead, onPace, behind, unavailable };

/// What the pace card says; `steps` as the person reads numbers.
Phrase label(StepPaceStatus status, std::string steps);

/// The time of day that clocks show at `moment`, in hours from 0 on: 13.5 at half past one. It is 0 where clocks
/// show the evening again although the next day has begun.
double hourOfDay(const Calendar& calendar, Date moment);

/// What the pace card is about.
struct PaceCard {
    Day day;
    Day today;
    std::int64_t steps = 0;  // of today so far
    double hour = 0;         // the time of day
};

struct StepPace {
    StepPaceStatus status = StepPaceStatus::unavailable;
    std::optional<std::int64_t> typicalSteps;  // of the median day by now
    bool operator==(const StepPace&) const = default;
};

struct StepPaceRule {
    /// Early in the day usual days have hardly diverged: a band narrower than this judges nobody.
    static constexpr double narrowestBand = 120;  // steps

    /// Unavailable without a baseline and for another day than today. The edges of the band are on pace.
    static StepPace judge(const std::optional<StepPaceBaseline>& baseline, const PaceCard& card);
};

}  // namespace pedvar
