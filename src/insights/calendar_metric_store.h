/// What the calendar shows of each day.
#pragma once

#include "core/async.h"
#include "core/event.h"
#include "health/activity_reads.h"
#include "health/settings_store.h"
#include "platform/clock.h"

#include <compare>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace pedvar {

using CalendarMetric = ActivityMetric;

/// Keeps values of days once they are read. A past day is final, unless it was read before it had ended; today is
/// read again when its value has grown old. Lives on the main executor.
class CalendarMetricStore {
public:
    static constexpr std::chrono::seconds todayStaleness{300};

    CalendarMetricStore(MainExecutor& executor, const Clock& clock, const SettingsStore& settings,
                        ActivityReads& reads);

    Event<> valuesChanged;

    /// None when not read yet; what cannot be read stays so.
    std::optional<double> value(Day day, CalendarMetric metric) const;

    bool needsFetch(Day day, CalendarMetric metric, Day today) const;

    /// Reads those of `days` that need it and have begun: consecutive ones in one pass, a new month as a whole.
    CancellableTask load(const std::vector<Day>& days, CalendarMetric metric);

private:
    struct DayKey {
        CalendarMetric metric;
        Day day;
        auto operator<=>(const DayKey&) const = default;
    };
    /// Days that follow each other.
    struct Run {
        Day first;
        Day last;
    };
    class InFlight;

    Task<> fetch(std::vector<Run> runs, CalendarMetric metric, InFlight);
    /// Keeps what a read that began at `moment` has found.
    void keep(Run run, CalendarMetric metric, const DayTotals& totals, Date moment);

    const Clock& clock_;
    const SettingsStore& settings_;
    ActivityReads& reads_;
    std::map<CalendarMetric, std::map<Day, double>> values_;
    std::set<DayKey> unfinished_;  // read before the day had ended
    std::set<DayKey> inFlight_;
    std::map<CalendarMetric, Date> lastTodayRead_;
    TaskScope tasks_;  // last: its coroutines use what stands above
};

}  // namespace pedvar
